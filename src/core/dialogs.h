#pragma once
// Message and file dialogs. The GUI shows real ones; headless runs and tests
// answer from a queue of scripted answers (unanswered ones take their default
// button). Every dialog is logged.
#include <deque>
#include <optional>
#include <string>

namespace mv {

class EventLog;

enum class DialogIcon { None, Information, Exclamation, Question, Critical };
enum class DialogButtons { OK, OKCancel, YesNo, YesNoCancel };
enum class DialogAnswer { OK, Cancel, Yes, No };

std::string toString(DialogAnswer answer);
std::optional<DialogAnswer> parseDialogAnswer(const std::string& text);

struct MessageRequest {
    std::string window;
    std::string title;
    std::string text;
    DialogIcon icon = DialogIcon::None;
    DialogButtons buttons = DialogButtons::OK;
};

struct FileRequest {
    std::string window;
    std::string title;
    // "Description|pattern;pattern" as the suite's file fields give it.
    std::string filter;
    std::string initialPath;
    // Which of the filter's entries is chosen when the dialog opens (0 = first).
    int selectedFilter = 0;
};

class Dialogs {
public:
    virtual ~Dialogs() = default;
    virtual DialogAnswer message(const MessageRequest& request) = 0;
    // nullopt when cancelled.
    virtual std::optional<std::string> openFile(const FileRequest& request) = 0;
    virtual std::optional<std::string> saveFile(const FileRequest& request) = 0;
};

// The default (first) button of a message dialog.
DialogAnswer defaultAnswer(DialogButtons buttons);

// Answers from a queue filled by the scenario's `answer` lines or by a test.
class ScriptedDialogs final : public Dialogs {
public:
    explicit ScriptedDialogs(EventLog& log) : m_log(log) {}
    void queueAnswer(std::string answer) { m_answers.push_back(std::move(answer)); }
    size_t pending() const { return m_answers.size(); }

    DialogAnswer message(const MessageRequest& request) override;
    std::optional<std::string> openFile(const FileRequest& request) override;
    std::optional<std::string> saveFile(const FileRequest& request) override;

private:
    std::optional<std::string> fileAnswer(const FileRequest& request, const char* kind);
    EventLog& m_log;
    std::deque<std::string> m_answers;
};

}  // namespace mv
