#include "gui/screen_fit.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <algorithm>
#include <cmath>

namespace mv {
namespace {

// Learned from the first window the window manager has framed; used for
// windows not yet shown, whose frame Qt cannot know.
QMargins g_knownMargins;

double dpiX(const QScreen* screen) { return screen ? screen->logicalDotsPerInchX() : 96.0; }
double dpiY(const QScreen* screen) { return screen ? screen->logicalDotsPerInchY() : 96.0; }

int clampStart(int start, int length, int areaStart, int areaLength) {
    return std::clamp(start, areaStart, areaStart + std::max(0, areaLength - length));
}

}  // namespace

QScreen* screenAtOrPrimary(QPoint at) {
    if (QScreen* s = QGuiApplication::screenAt(at)) return s;
    return QGuiApplication::primaryScreen();
}

QPoint twipsToPixels(double leftTwips, double topTwips, const QScreen* screen) {
    return {static_cast<int>(std::lround(leftTwips * dpiX(screen) / kTwipsPerInch)),
            static_cast<int>(std::lround(topTwips * dpiY(screen) / kTwipsPerInch))};
}

void pixelsToTwips(QPoint pixels, const QScreen* screen, float& leftTwips, float& topTwips) {
    leftTwips = static_cast<float>(std::round(pixels.x() * kTwipsPerInch / dpiX(screen)));
    topTwips = static_cast<float>(std::round(pixels.y() * kTwipsPerInch / dpiY(screen)));
}

QRect fitInside(QRect frame, const QRect& available) {
    if (available.isEmpty()) return frame;
    frame.setSize(frame.size().boundedTo(available.size()));
    frame.moveTo(clampStart(frame.x(), frame.width(), available.x(), available.width()),
                 clampStart(frame.y(), frame.height(), available.y(), available.height()));
    return frame;
}

QRect besideOnScreen(QSize preferred, QSize minimum, const QRect& anchor, const QRect& available, int gap) {
    preferred = preferred.boundedTo(available.size());
    minimum = minimum.boundedTo(preferred);
    // Room on each side of the anchor; a side that holds the minimum takes as
    // much of the preferred size as it has room for.
    const int right = available.right() - anchor.right() - gap;
    const int left = anchor.left() - available.left() - gap;
    const int below = available.bottom() - anchor.bottom() - gap;
    const int above = anchor.top() - available.top() - gap;
    if (right >= minimum.width()) {
        const int w = std::min(preferred.width(), right);
        return fitInside({QPoint(anchor.right() + 1 + gap, anchor.top()), QSize(w, preferred.height())}, available);
    }
    if (left >= minimum.width()) {
        const int w = std::min(preferred.width(), left);
        return fitInside({QPoint(anchor.left() - gap - w, anchor.top()), QSize(w, preferred.height())}, available);
    }
    if (below >= minimum.height()) {
        const int h = std::min(preferred.height(), below);
        return fitInside({QPoint(anchor.left(), anchor.bottom() + 1 + gap), QSize(preferred.width(), h)}, available);
    }
    if (above >= minimum.height()) {
        const int h = std::min(preferred.height(), above);
        return fitInside({QPoint(anchor.left(), anchor.top() - gap - h), QSize(preferred.width(), h)}, available);
    }
    // No room beside it: over the anchor's right-hand side, against the screen's edge.
    return fitInside({QPoint(available.right(), anchor.top()), preferred}, available);
}

QMargins frameMarginsOf(const QWidget& window) {
    if (window.testAttribute(Qt::WA_WState_Created) && window.isVisible()) {
        const QRect frame = window.frameGeometry();
        const QRect inner = window.geometry();
        const QMargins seen(inner.left() - frame.left(), inner.top() - frame.top(), frame.right() - inner.right(),
                            frame.bottom() - inner.bottom());
        if (!seen.isNull()) g_knownMargins = seen;
        return seen;
    }
    return g_knownMargins;
}

}  // namespace mv
