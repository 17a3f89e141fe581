#pragma once
// The suite's event log: one JSON object a line ("JSON Lines"), stamped with
// the local date-time in milliseconds. Headless runs write it to a file; the
// GUI's host console listens to it. With no sink and no listener it costs a
// branch, so idle timers can call it freely.
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "core/local_time.h"

namespace mv {

using LogValue = std::variant<bool, int64_t, double, std::string>;

struct LogField {
    std::string key;
    std::variant<LogValue, std::vector<LogValue>> value;
};

struct LogRecord {
    LocalDateTime time;
    std::string kind;  // event, host, media, speech, dialog, window, value, dtmf, shell, error, end
    std::vector<LogField> fields;
    std::string toJson() const;
};

// A JSON string for any text: invalid UTF-8 becomes U+FFFD and control
// characters are escaped (see safeText in plain_text.h), so every log line
// is valid JSON.
std::string jsonQuote(const std::string& text);

class EventLog {
public:
    void setTimeSource(std::function<LocalDateTime()> source) { m_timeSource = std::move(source); }
    void setStream(std::ostream* stream) { m_stream = stream; }
    using Listener = std::function<void(const LogRecord&)>;
    void addListener(Listener listener) { m_listeners.push_back(std::move(listener)); }
    bool active() const { return m_stream != nullptr || !m_listeners.empty(); }
    // Whether host queries (IsTransmitting, IsBusy, ...) and commands that
    // only repeat a line's state are logged too; off by default, since the
    // 100 ms timers would fill the disk (--log-queries turns it on).
    void setRecordsQueries(bool on) { m_recordsQueries = on; }
    bool recordsQueries() const { return m_recordsQueries && active(); }

    // A host event as it was injected: {"kind":"event","event":"EchoLink_RX","args":[true]}
    void hostEvent(const std::string& event, std::vector<LogValue> args);
    // A host command a window called, with its result where it has one.
    void hostCall(const std::string& window, const std::string& call, std::vector<LogValue> args,
                  std::optional<LogValue> result = std::nullopt);
    void media(const std::string& window, const std::string& op, const std::string& path);
    void speech(const std::string& window, const std::string& op, const std::string& text, bool keyed);
    void dialog(const std::string& window, const std::string& title, const std::string& text,
                const std::string& answer);
    void windowOp(const std::string& window, const std::string& op);
    // What a control shows now, asked for by a scenario's `log` line.
    void value(const std::string& window, const std::string& control, LogValue value);
    // A received DTMF string matched one of a window's codes: which code, the
    // function it stands for and, when the window did not obey it, why not.
    void dtmfCommand(const std::string& window, const std::string& code, const std::string& function,
                     const std::string& refusedBecause = {});
    // An address handed to the desktop to open, with the shell's result code
    // and whether it was really opened or only recorded (a headless run).
    void shellOpen(const std::string& window, const std::string& address, int64_t result, bool executed);
    void error(const std::string& window, const std::string& message);
    void end(const std::string& reason);
    void write(LogRecord record);

private:
    std::function<LocalDateTime()> m_timeSource;
    std::ostream* m_stream = nullptr;
    std::vector<Listener> m_listeners;
    bool m_recordsQueries = false;
};

}  // namespace mv
