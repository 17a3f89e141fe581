#include "gui/window_shell.h"

#include <QCloseEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMoveEvent>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QStyle>
#include <QVBoxLayout>

#include "gui/screen_fit.h"

namespace mv {

ModuleWindow::ModuleWindow(Window& window, WindowView::Post post)
    : QWidget(nullptr, Qt::Window), m_window(window), m_post(post) {
    setObjectName(QString::fromStdString(window.name()));
    setWindowTitle(QString::fromStdString(window.caption()));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_scroll = new QScrollArea(this);
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setWidgetResizable(true);
    m_content = new QWidget;
    m_view = std::make_unique<WindowView>(window, *m_content, std::move(post));
    m_scroll->setWidget(m_content);
    layout->addWidget(m_scroll, 1);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("statusLine"));
    m_status->setTextFormat(Qt::PlainText);
    // A long reason wraps rather than widening the window.
    m_status->setWordWrap(true);
    m_status->setContentsMargins(6, 2, 6, 4);
    layout->addWidget(m_status);
    showStatus();

    auto* save = new QShortcut(QKeySequence::Save, this);
    connect(save, &QShortcut::activated, this, [this] { saveShortcut(); });
    placeFromEngine();
}

void ModuleWindow::saveShortcut() {
    std::weak_ptr<bool> alive = m_alive;
    Window* window = &m_window;
    // The button is looked up when the click runs: it is the window's save
    // button as the engine has it then (a reload builds a new one).
    m_post([alive, window] {
        if (alive.expired() || !window->isLoaded()) return;
        if (Button* save = window->saveButton()) save->click();
    });
}

void ModuleWindow::setMenuBar(QMenuBar* bar) {
    m_menuBar = bar;
    layout()->setMenuBar(bar);
}

void ModuleWindow::showStatus() {
    const QString text = QString::fromStdString(m_window.statusText());
    m_status->setText(text);
    m_status->setVisible(!text.isEmpty());
}

QSize ModuleWindow::sizeHint() const {
    QSize size = m_content->sizeHint();
    if (m_menuBar) size.rheight() += m_menuBar->sizeHint().height();
    if (!m_status->isHidden()) size.rheight() += m_status->heightForWidth(size.width());
    return size;
}

void ModuleWindow::fitToScreen() {
    QScreen* screen = screenAtOrPrimary(pos());
    const QMargins frame = frameMarginsOf(*this);
    QSize room = screen->availableGeometry().size().shrunkBy(frame);
    QSize wanted = sizeHint();
    // A scroll bar needed one way takes room the other way.
    const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
    if (wanted.height() > room.height()) wanted.rwidth() += bar;
    if (wanted.width() > room.width()) wanted.rheight() += bar;
    resize(wanted.boundedTo(room).expandedTo(minimumSizeHint().boundedTo(room)));
}

void ModuleWindow::placeFromEngine() {
    QScreen* screen = screenAtOrPrimary(twipsToPixels(m_window.leftTwips(), m_window.topTwips(), nullptr));
    const QPoint wanted = twipsToPixels(m_window.leftTwips(), m_window.topTwips(), screen);
    const QMargins margins = frameMarginsOf(*this);
    const QRect frame(wanted, size().grownBy(margins));
    const QRect fitted = fitInside(frame, screen->availableGeometry());
    if (fitted.size() != frame.size()) resize(fitted.size().shrunkBy(margins));
    m_placedAt = fitted.topLeft();
    if (pos() != m_placedAt) move(m_placedAt);
}

void ModuleWindow::detach() {
    m_view.reset();
    m_alive.reset();
}

void ModuleWindow::closeEvent(QCloseEvent* event) {
    // The window's close query decides, in its turn on the engine's thread.
    event->ignore();
    std::weak_ptr<bool> alive = m_alive;
    Window* window = &m_window;
    m_post([alive, window] {
        if (!alive.expired()) window->closeBox();
    });
}

void ModuleWindow::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    // Only the operator's moves go back: the engine's own land where they were put.
    const QPoint at = pos();
    if (at == m_placedAt) return;
    m_placedAt = at;
    float left = 0, top = 0;
    pixelsToTwips(at, screenAtOrPrimary(at), left, top);
    std::weak_ptr<bool> alive = m_alive;
    Window* window = &m_window;
    m_post([alive, window, left, top] {
        if (!alive.expired() && window->isLoaded()) window->move(left, top);
    });
}

WindowShell::WindowShell(Program& program, WindowView::Post post) : m_program(program), m_post(std::move(post)) {
    m_program.setObserver(this);
}

WindowShell::~WindowShell() {
    if (m_program.observer() == this) m_program.setObserver(nullptr);
    for (auto& [name, shown] : m_windows) shown->detach();
    m_windows.clear();
}

ModuleWindow* WindowShell::windowFor(const std::string& name) const {
    const auto it = m_windows.find(name);
    return it == m_windows.end() ? nullptr : it->second.get();
}

void WindowShell::windowLoaded(Window&) {
    // Nothing yet: every module window loads hidden, and most stay so on a
    // node left alone. Its widgets are built when it is first shown, from
    // the controls as they are then; until then it costs no memory here.
}

ModuleWindow& WindowShell::make(Window& window) {
    auto made = std::make_unique<ModuleWindow>(window, m_post);
    if (m_onMade) m_onMade(*made);
    ModuleWindow& kept = *made;
    m_windows[window.name()] = std::move(made);
    return kept;
}

void WindowShell::windowUnloading(Window& window) {
    const auto it = m_windows.find(window.name());
    if (it == m_windows.end()) return;
    // The unload may come from inside one of this window's own Qt handlers;
    // the widgets go once that handler has returned.
    ModuleWindow* gone = it->second.release();
    m_windows.erase(it);
    gone->detach();
    gone->hide();
    gone->deleteLater();
}

void WindowShell::windowVisibilityChanged(Window& window) {
    ModuleWindow* shown = windowFor(window.name());
    if (!window.isVisible()) {
        if (shown) shown->hide();
        return;
    }
    if (!shown) shown = &make(window);
    const bool first = !shown->testAttribute(Qt::WA_WState_ExplicitShowHide);
    if (first) shown->fitToScreen();
    shown->placeFromEngine();
    shown->show();
    // Now framed by the window manager, it is kept on the screen frame and all.
    shown->placeFromEngine();
    if (first && m_onFirstShown) m_onFirstShown(*shown);
}

void WindowShell::windowCaptionChanged(Window& window) {
    if (ModuleWindow* shown = windowFor(window.name())) shown->setWindowTitle(QString::fromStdString(window.caption()));
}

void WindowShell::windowMoved(Window& window) {
    if (ModuleWindow* shown = windowFor(window.name())) shown->placeFromEngine();
}

void WindowShell::windowStatusChanged(Window& window) {
    if (ModuleWindow* shown = windowFor(window.name())) shown->showStatus();
}

}  // namespace mv
