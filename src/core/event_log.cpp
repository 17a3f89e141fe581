#include "core/event_log.h"

#include <cmath>
#include <cstdio>
#include <ostream>

#include "core/plain_text.h"

namespace mv {

std::string jsonQuote(const std::string& text) {
    std::string out;
    out.reserve(text.size() + 2);
    out += '"';
    appendSafeText(out, text, true);
    out += '"';
    return out;
}

namespace {

void appendValue(std::string& out, const LogValue& v) {
    if (const bool* b = std::get_if<bool>(&v)) {
        out += *b ? "true" : "false";
    } else if (const int64_t* i = std::get_if<int64_t>(&v)) {
        out += std::to_string(*i);
    } else if (const double* d = std::get_if<double>(&v)) {
        if (!std::isfinite(*d)) {
            out += "null";
        } else {
            char buf[32];
            std::snprintf(buf, sizeof buf, "%.6g", *d);
            out += buf;
        }
    } else {
        out += jsonQuote(std::get<std::string>(v));
    }
}

}  // namespace

std::string LogRecord::toJson() const {
    std::string out = "{\"t\":" + jsonQuote(time.isoText()) + ",\"kind\":" + jsonQuote(kind);
    for (const LogField& f : fields) {
        out += ',';
        out += jsonQuote(f.key);
        out += ':';
        if (const auto* list = std::get_if<std::vector<LogValue>>(&f.value)) {
            out += '[';
            for (size_t i = 0; i < list->size(); ++i) {
                if (i) out += ',';
                appendValue(out, (*list)[i]);
            }
            out += ']';
        } else {
            appendValue(out, std::get<LogValue>(f.value));
        }
    }
    out += '}';
    return out;
}

void EventLog::write(LogRecord record) {
    if (!active()) return;
    if (m_timeSource) record.time = m_timeSource();
    if (m_stream) {
        *m_stream << record.toJson() << '\n';
        m_stream->flush();
    }
    for (const Listener& l : m_listeners) l(record);
}

void EventLog::hostEvent(const std::string& event, std::vector<LogValue> args) {
    if (!active()) return;
    write({{}, "event", {{"event", LogValue{event}}, {"args", std::move(args)}}});
}

void EventLog::hostCall(const std::string& window, const std::string& call, std::vector<LogValue> args,
                        std::optional<LogValue> result) {
    if (!active()) return;
    LogRecord r{{}, "host", {{"window", LogValue{window}}, {"call", LogValue{call}}, {"args", std::move(args)}}};
    if (result) r.fields.push_back({"result", *result});
    write(std::move(r));
}

void EventLog::media(const std::string& window, const std::string& op, const std::string& path) {
    if (!active()) return;
    write({{}, "media", {{"window", LogValue{window}}, {"op", LogValue{op}}, {"path", LogValue{path}}}});
}

void EventLog::speech(const std::string& window, const std::string& op, const std::string& text, bool keyed) {
    if (!active()) return;
    write({{},
           "speech",
           {{"window", LogValue{window}}, {"op", LogValue{op}}, {"text", LogValue{text}}, {"keyed", LogValue{keyed}}}});
}

void EventLog::dialog(const std::string& window, const std::string& title, const std::string& text,
                      const std::string& answer) {
    if (!active()) return;
    write({{},
           "dialog",
           {{"window", LogValue{window}},
            {"title", LogValue{title}},
            {"text", LogValue{text}},
            {"answer", LogValue{answer}}}});
}

void EventLog::windowOp(const std::string& window, const std::string& op) {
    if (!active()) return;
    write({{}, "window", {{"window", LogValue{window}}, {"op", LogValue{op}}}});
}

void EventLog::value(const std::string& window, const std::string& control, LogValue value) {
    if (!active()) return;
    write({{}, "value", {{"window", LogValue{window}}, {"control", LogValue{control}}, {"value", std::move(value)}}});
}

void EventLog::dtmfCommand(const std::string& window, const std::string& code, const std::string& function,
                           const std::string& refusedBecause) {
    if (!active()) return;
    LogRecord r{{}, "dtmf", {{"window", LogValue{window}}, {"code", LogValue{code}}, {"function", LogValue{function}}}};
    if (!refusedBecause.empty()) r.fields.push_back({"refused", LogValue{refusedBecause}});
    write(std::move(r));
}

void EventLog::shellOpen(const std::string& window, const std::string& address, int64_t result, bool executed) {
    if (!active()) return;
    write({{},
           "shell",
           {{"window", LogValue{window}},
            {"op", LogValue{std::string("open")}},
            {"address", LogValue{address}},
            {"result", LogValue{result}},
            {"executed", LogValue{executed}}}});
}

void EventLog::error(const std::string& window, const std::string& message) {
    if (!active()) return;
    write({{}, "error", {{"window", LogValue{window}}, {"message", LogValue{message}}}});
}

void EventLog::end(const std::string& reason) {
    if (!active()) return;
    write({{}, "end", {{"reason", LogValue{reason}}}});
}

}  // namespace mv
