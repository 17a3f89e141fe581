#include "gui/stop_signals.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

#include "app/run_signals.h"
#include "core/program.h"

namespace mv {
namespace {

int g_pipe[2] = {-1, -1};

void onSignal(int signal) {
    const char byte = static_cast<char>(signal);
    [[maybe_unused]] const ssize_t n = ::write(g_pipe[0], &byte, 1);
}

}  // namespace

StopSignals::StopSignals(Program& program, std::function<void()> reopen)
    : m_program(program), m_reopen(std::move(reopen)) {
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_pipe) != 0) return;
    m_notifier = new QSocketNotifier(g_pipe[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] { stop(); });
    struct sigaction sa {};
    sa.sa_handler = onSignal;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = SA_RESTART;
    for (int sig : {SIGINT, SIGTERM, SIGHUP, SIGUSR1}) ::sigaction(sig, &sa, nullptr);
}

StopSignals::~StopSignals() {
    struct sigaction sa {};
    sa.sa_handler = SIG_DFL;
    for (int sig : {SIGINT, SIGTERM, SIGHUP, SIGUSR1}) ::sigaction(sig, &sa, nullptr);
    for (int& fd : g_pipe) {
        if (fd >= 0) ::close(fd);
        fd = -1;
    }
}

void StopSignals::stop() {
    char byte = 0;
    [[maybe_unused]] const ssize_t n = ::read(g_pipe[1], &byte, 1);
    if (byte == SIGUSR1) {
        if (m_reopen) m_reopen();
        return;
    }
    m_program.shutdown(std::string("stopped by ") + signalName(byte));
}

}  // namespace mv
