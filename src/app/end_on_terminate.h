#pragma once
// The last chance for an error nobody caught: while one of these exists,
// std::terminate ends the program in order (air silenced, transmitter
// released, `end` logged with the error) before the process aborts as it
// would have anyway. An unattended node must not crash with the transmitter
// keyed.
#include <exception>

namespace mv {

class Program;

class EndOnTerminate {
public:
    explicit EndOnTerminate(Program& program);
    ~EndOnTerminate();
    EndOnTerminate(const EndOnTerminate&) = delete;
    EndOnTerminate& operator=(const EndOnTerminate&) = delete;

private:
    std::terminate_handler m_previous;
};

}  // namespace mv
