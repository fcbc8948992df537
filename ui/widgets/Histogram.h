// PELLUCIDAHISTOGRAM: the distribution of an image's values in NumBins bins
// per channel (256 when the markup gives none), drawn as translucent red,
// green and blue areas over a dark well with quarter lines; heights follow the
// square root of the counts so that faint tails stay visible beside the peak.
#pragma once

#include "ui/WidgetKinds.h"

inline constexpr uint32_t kHistogramDefaultBins = 256;

int Histogram_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);

// Counts every sample of the image's planes into the bins: bin = v * bins / (max + 1).
void Histogram_SetImage(Toolkit* toolkit, Widget* histogram, const ImageBuffer* image);
uint32_t Histogram_BinCount(const Widget* histogram);
