#pragma once
// Where a top-level window goes on the desktop: window positions held in
// twips converted at the screen's logical DPI, and window frames kept wholly
// on a screen's available area (inside panels and docks), shrunk to it when
// they are larger.
#include <QMargins>
#include <QPoint>
#include <QRect>

class QScreen;
class QWidget;

namespace mv {

inline constexpr double kTwipsPerInch = 1440.0;

// The screen a point lies on, or the primary screen.
QScreen* screenAtOrPrimary(QPoint at);
// Twips to pixels and back at a screen's logical DPI (96 DPI: 15 twips a pixel).
QPoint twipsToPixels(double leftTwips, double topTwips, const QScreen* screen);
void pixelsToTwips(QPoint pixels, const QScreen* screen, float& leftTwips, float& topTwips);

// The window's frame put wholly inside `available`: first made no larger
// than it, then moved the least that takes it inside.
QRect fitInside(QRect frame, const QRect& available);

// A place for a frame beside `anchor` on `available`: to its right when at
// least `minimum` fits there, else to its left, else below, else above (each
// as near the preferred size as the room allows), else over the anchor's
// right-hand side against the screen's edge; always wholly on `available`.
QRect besideOnScreen(QSize preferred, QSize minimum, const QRect& anchor, const QRect& available, int gap);

// The margins the window manager adds around `window`'s client area; before
// the window has ever been shown, those seen on any shown window so far.
QMargins frameMarginsOf(const QWidget& window);

}  // namespace mv
