#include "core/dialogs.h"

#include <algorithm>
#include <cctype>

#include "core/event_log.h"

namespace mv {

std::string toString(DialogAnswer answer) {
    switch (answer) {
        case DialogAnswer::OK: return "OK";
        case DialogAnswer::Cancel: return "Cancel";
        case DialogAnswer::Yes: return "Yes";
        case DialogAnswer::No: return "No";
    }
    return "OK";
}

std::optional<DialogAnswer> parseDialogAnswer(const std::string& text) {
    std::string lower = text;
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
    if (lower == "ok") return DialogAnswer::OK;
    if (lower == "cancel") return DialogAnswer::Cancel;
    if (lower == "yes") return DialogAnswer::Yes;
    if (lower == "no") return DialogAnswer::No;
    return std::nullopt;
}

DialogAnswer defaultAnswer(DialogButtons buttons) {
    switch (buttons) {
        case DialogButtons::YesNo:
        case DialogButtons::YesNoCancel: return DialogAnswer::Yes;
        case DialogButtons::OK:
        case DialogButtons::OKCancel: return DialogAnswer::OK;
    }
    return DialogAnswer::OK;
}

namespace {
bool allowed(DialogButtons buttons, DialogAnswer a) {
    switch (buttons) {
        case DialogButtons::OK: return a == DialogAnswer::OK;
        case DialogButtons::OKCancel: return a == DialogAnswer::OK || a == DialogAnswer::Cancel;
        case DialogButtons::YesNo: return a == DialogAnswer::Yes || a == DialogAnswer::No;
        case DialogButtons::YesNoCancel: return a != DialogAnswer::OK;
    }
    return false;
}
}  // namespace

DialogAnswer ScriptedDialogs::message(const MessageRequest& request) {
    DialogAnswer answer = defaultAnswer(request.buttons);
    std::string note;
    if (!m_answers.empty()) {
        const std::string queued = m_answers.front();
        m_answers.pop_front();
        const auto parsed = parseDialogAnswer(queued);
        if (parsed && allowed(request.buttons, *parsed))
            answer = *parsed;
        else
            m_log.error(request.window, "queued answer \"" + queued + "\" does not fit dialog \"" + request.title +
                                            "\"; its default button was used");
    } else {
        note = " (default)";
    }
    m_log.dialog(request.window, request.title, request.text, toString(answer) + note);
    return answer;
}

std::optional<std::string> ScriptedDialogs::fileAnswer(const FileRequest& request, const char* kind) {
    std::optional<std::string> result;
    std::string shown = "Cancel (default)";
    if (!m_answers.empty()) {
        std::string queued = m_answers.front();
        m_answers.pop_front();
        const auto parsed = parseDialogAnswer(queued);
        if (parsed == DialogAnswer::Cancel) {
            shown = "Cancel";
        } else {
            result = queued;
            shown = queued;
        }
    }
    m_log.dialog(request.window, request.title.empty() ? kind : request.title, request.filter, shown);
    return result;
}

std::optional<std::string> ScriptedDialogs::openFile(const FileRequest& request) {
    return fileAnswer(request, "Open");
}

std::optional<std::string> ScriptedDialogs::saveFile(const FileRequest& request) {
    return fileAnswer(request, "Save As");
}

}  // namespace mv
