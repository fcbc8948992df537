// The stereo synthesis: a depth map made from the picture itself and the two
// views it gives. Deep-sky images carry no depth, so the map is a plausible
// one: the brighter, smoothed structure of a nebula or galaxy comes towards
// the viewer, and stars (local peaks) are lifted in front of whatever lies
// around them. The views shift every pixel horizontally by its depth, nearer
// pixels covering farther ones, and the gaps that opens are filled from the
// background side.
#pragma once

#include "host/KernelControl.h"
#include "image/Image.h"

#include <cstdint>

enum class StereoPreview : int32_t { kDepth = 0, kPair = 1, kAnaglyph = 2 };

struct StereoSettings {
    double strength = 0.5;  // 0..1: the parallax at the front, as a fraction of kStereoMaxParallax
    double standOut = 0.6;  // 0..1: a star's depth moves this far from its surroundings towards the front
    StereoPreview preview = StereoPreview::kDepth;
};

// The largest parallax between the two views, as a fraction of the width.
inline constexpr double kStereoMaxParallax = 0.03;
// The depth map's samples: 0 is the back, kStereoDepthMax the front.
inline constexpr int32_t kStereoDepthBits = 16;
inline constexpr int64_t kStereoDepthMax = (int64_t{1} << kStereoDepthBits) - 1;
// The grey gap between the two halves of the side-by-side preview, in pixels.
inline constexpr int32_t kStereoPairGap = 8;

// The depth map of the image: a grey 16-bit image of its size (the same
// samples in all three planes). Null when cancelled (tested once per row).
ImageBuffer* Stereo_DepthMap(const ImageBuffer* image, const StereoSettings& settings,
                             const KernelControl* control);

// The parallax in pixels between the views at the front, for an image this wide.
double Stereo_ParallaxPixels(int32_t width, double strength);

// The left and right views of the image for its depth map (same size): a
// pixel of depth d moves by +-d / max * parallax / 2, right in the left view.
// False when cancelled.
bool Stereo_Views(const ImageBuffer* image, const ImageBuffer* depth, const StereoSettings& settings,
                  const KernelControl* control, ImagePtr* left, ImagePtr* right);

// What the form shows: the depth map at the image's depth, the views side by
// side (left on the left, kStereoPairGap apart), or a red-cyan anaglyph (the
// left view's red, the right view's green and blue). Null when cancelled.
ImageBuffer* Stereo_Preview(const ImageBuffer* image, const StereoSettings& settings,
                            const KernelControl* control);
