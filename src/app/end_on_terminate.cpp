#include "app/end_on_terminate.h"

#include <cstdlib>
#include <string>

#include "core/program.h"

namespace mv {
namespace {

Program* g_program = nullptr;

std::string currentError() {
    try {
        if (const std::exception_ptr e = std::current_exception()) std::rethrow_exception(e);
    } catch (const std::exception& e) {
        return e.what();
    } catch (...) {
        return "an unknown error";
    }
    return "terminate called";
}

[[noreturn]] void endThenAbort() {
    // Taken first, so an error inside the end itself cannot come back here.
    if (Program* program = g_program) {
        g_program = nullptr;
        try {
            program->shutdown("fatal error: " + currentError());
        } catch (...) {
        }
    }
    std::abort();
}

}  // namespace

EndOnTerminate::EndOnTerminate(Program& program) : m_previous(std::set_terminate(endThenAbort)) { g_program = &program; }

EndOnTerminate::~EndOnTerminate() {
    g_program = nullptr;
    std::set_terminate(m_previous);
}

}  // namespace mv
