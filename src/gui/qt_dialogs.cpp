#include "gui/qt_dialogs.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QRegularExpression>
#include <QStringList>

#include "core/errors.h"
#include "core/event_log.h"

namespace mv {

QString qtFileFilter(const std::string& filter) {
    const QStringList parts = QString::fromStdString(filter).split(QLatin1Char('|'));
    QStringList filters;
    for (qsizetype i = 0; i < parts.size(); i += 2) {
        const QString description = parts[i].trimmed();
        // A description without its patterns is taken as its own pattern list.
        QString patterns = i + 1 < parts.size() ? parts[i + 1] : QString();
        if (patterns.trimmed().isEmpty()) patterns = description;
        QStringList list;
        for (const QString& p : patterns.split(QRegularExpression(QStringLiteral("[;,\\s]+")), Qt::SkipEmptyParts))
            list << p;
        if (list.isEmpty()) continue;
        filters << (description.isEmpty() ? list.join(QLatin1Char(' '))
                                          : description + QStringLiteral(" (") + list.join(QLatin1Char(' ')) + QLatin1Char(')'));
    }
    return filters.join(QStringLiteral(";;"));
}

QWidget* QtDialogs::parentFor(const std::string& window) const {
    return m_hooks.parentFor ? m_hooks.parentFor(window) : nullptr;
}

void QtDialogs::beforeWait() const {
    if (m_hooks.beforeWait) m_hooks.beforeWait();
}

void QtDialogs::stopIfEnded() const {
    if (m_hooks.ended && m_hooks.ended()) throw ProgramEnded{};
}

DialogAnswer QtDialogs::message(const MessageRequest& request) {
    QMessageBox box(parentFor(request.window));
    box.setWindowTitle(QString::fromStdString(request.title));
    box.setText(QString::fromStdString(request.text));
    switch (request.icon) {
        case DialogIcon::None: box.setIcon(QMessageBox::NoIcon); break;
        case DialogIcon::Information: box.setIcon(QMessageBox::Information); break;
        case DialogIcon::Exclamation: box.setIcon(QMessageBox::Warning); break;
        case DialogIcon::Question: box.setIcon(QMessageBox::Question); break;
        case DialogIcon::Critical: box.setIcon(QMessageBox::Critical); break;
    }
    QMessageBox::StandardButtons buttons;
    switch (request.buttons) {
        case DialogButtons::OK: buttons = QMessageBox::Ok; break;
        case DialogButtons::OKCancel: buttons = QMessageBox::Ok | QMessageBox::Cancel; break;
        case DialogButtons::YesNo: buttons = QMessageBox::Yes | QMessageBox::No; break;
        case DialogButtons::YesNoCancel: buttons = QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel; break;
    }
    box.setStandardButtons(buttons);
    const DialogAnswer fallback = defaultAnswer(request.buttons);
    const auto toQt = [](DialogAnswer a) {
        switch (a) {
            case DialogAnswer::OK: return QMessageBox::Ok;
            case DialogAnswer::Cancel: return QMessageBox::Cancel;
            case DialogAnswer::Yes: return QMessageBox::Yes;
            case DialogAnswer::No: return QMessageBox::No;
        }
        return QMessageBox::Ok;
    };
    box.setDefaultButton(toQt(fallback));
    beforeWait();
    const int result = box.exec();
    stopIfEnded();
    DialogAnswer answer = fallback;
    switch (result) {
        case QMessageBox::Ok: answer = DialogAnswer::OK; break;
        case QMessageBox::Cancel: answer = DialogAnswer::Cancel; break;
        case QMessageBox::Yes: answer = DialogAnswer::Yes; break;
        case QMessageBox::No: answer = DialogAnswer::No; break;
        default:
            // Closed without a button: the escape answer of the buttons offered.
            answer = request.buttons == DialogButtons::OK ? DialogAnswer::OK
                     : request.buttons == DialogButtons::YesNo ? DialogAnswer::No
                                                               : DialogAnswer::Cancel;
    }
    m_log.dialog(request.window, request.title, request.text, toString(answer));
    return answer;
}

std::optional<std::string> QtDialogs::fileDialog(const FileRequest& request, bool save) {
    const QString title = QString::fromStdString(request.title.empty() ? (save ? "Save As" : "Open") : request.title);
    QFileDialog dialog(parentFor(request.window), title, QString::fromStdString(request.initialPath),
                       qtFileFilter(request.filter));
    // The same dialog on every desktop, and one that runs in our own event loop.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    const QStringList filters = dialog.nameFilters();
    if (request.selectedFilter > 0 && request.selectedFilter < filters.size()) dialog.selectNameFilter(filters[request.selectedFilter]);
    beforeWait();
    const int result = dialog.exec();
    stopIfEnded();
    std::optional<std::string> chosen;
    if (result == QDialog::Accepted && !dialog.selectedFiles().isEmpty())
        chosen = dialog.selectedFiles().constFirst().toStdString();
    m_log.dialog(request.window, title.toStdString(), request.filter, chosen ? *chosen : std::string("Cancel"));
    return chosen;
}

std::optional<std::string> QtDialogs::openFile(const FileRequest& request) { return fileDialog(request, false); }

std::optional<std::string> QtDialogs::saveFile(const FileRequest& request) { return fileDialog(request, true); }

}  // namespace mv
