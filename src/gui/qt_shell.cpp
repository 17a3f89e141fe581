#include "gui/qt_shell.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QUrl>

#include "core/event_log.h"

namespace mv {
namespace {

int openWithDesktop(const std::string& address) {
    const QUrl url = QUrl::fromUserInput(QString::fromStdString(address));
    if (!url.isValid()) return shell_result::kFileNotFound;
    if (url.isLocalFile()) {
        const QFileInfo file(url.toLocalFile());
        if (!file.exists()) return file.dir().exists() ? shell_result::kFileNotFound : shell_result::kPathNotFound;
    }
    return QDesktopServices::openUrl(url) ? shell_result::kOpened : shell_result::kNoAssociation;
}

}  // namespace

int QtShell::open(const std::string& window, const std::string& address) {
    const int result = openWithDesktop(address);
    m_log.shellOpen(window, address, result, shellOpened(result));
    return result;
}

}  // namespace mv
