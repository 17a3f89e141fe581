#include "gui/caption_colours.h"

#include <QApplication>
#include <QWidget>
#include <algorithm>
#include <cmath>

namespace mv {
namespace {

// Below this a caption is hard to read (the contrast asked of large or bold text).
constexpr double kReadable = 3.0;

double channelLight(double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); }

double luminance(const QColor& c) {
    return 0.2126 * channelLight(c.redF()) + 0.7152 * channelLight(c.greenF()) + 0.0722 * channelLight(c.blueF());
}

QColor qcolor(Rgb c) { return QColor(c.r, c.g, c.b); }

}  // namespace

double contrastRatio(const QColor& a, const QColor& b) {
    const double la = luminance(a), lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

void paintCaption(QWidget& widget, Rgb fore, std::optional<Rgb> back, const QPalette* themeGiven) {
    // The window's own colours, as the desktop's theme gives them.
    const QPalette theme = themeGiven                 ? *themeGiven
                           : widget.parentWidget() ? widget.parentWidget()->palette()
                                                   : QApplication::palette();
    QPalette palette = theme;
    bool patch = false;
    if (back) {
        palette.setColor(QPalette::WindowText, qcolor(fore));
        palette.setColor(QPalette::Window, qcolor(*back));
        patch = true;
    } else if (fore != kBlack) {
        const QColor colour = qcolor(fore);
        palette.setColor(QPalette::WindowText, colour);
        if (contrastRatio(colour, theme.color(QPalette::Window)) < kReadable) {
            const QColor light(0xF4, 0xF4, 0xF4), dark(0x1E, 0x1E, 0x1E);
            palette.setColor(QPalette::Window,
                             contrastRatio(colour, light) >= contrastRatio(colour, dark) ? light : dark);
            patch = true;
        }
    }
    widget.setAutoFillBackground(patch);
    widget.setPalette(palette);
}

}  // namespace mv
