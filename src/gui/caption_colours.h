#pragma once
// Captions in the suite's own colours on whatever palette the desktop has: a
// plain (black) caption follows the palette's text colour, so it reads on a
// dark theme too; a coloured one ("PTT ON" red, "PTT OFF" green) keeps its
// colour, on a background that keeps it readable.
#include <QColor>
#include <QPalette>
#include <optional>

#include "core/controls.h"

class QWidget;

namespace mv {

// How far apart two colours are to the eye (1 to 21; text wants 3 or more).
double contrastRatio(const QColor& a, const QColor& b);

// Draws `widget`'s caption in `fore` on `back` when the caption has a
// background of its own; otherwise on the window's background when `fore`
// reads well there, or else on a light or dark patch, whichever reads better.
// The window's background is `theme`'s, or by default the parent's.
void paintCaption(QWidget& widget, Rgb fore, std::optional<Rgb> back, const QPalette* theme = nullptr);

}  // namespace mv
