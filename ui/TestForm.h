// Content for the toolkit's test form (resources/Pellucida_TestForm.xml) that
// markup cannot give: list rows, slider ranges, an image for the view and the
// histogram, captions. The form viewer, the golden pictures and the benchmark
// show the same screen through it.
#pragma once

#include "image/Image.h"

#include <cstdint>
#include <vector>

struct Toolkit;
struct Widget;

inline constexpr const char* kTestFormEntry = "Pellucida_TestForm.xml";

struct TestFormContent {
    ImagePtr image;            // a synthetic star field, shown by the view
    std::vector<uint8_t> lut;  // 65536 entries: a gentle screen stretch
    ImagePtr stretched;        // the image through the table, for the histogram
};

// Loads the test form under the root, fills it and lays it out. The content
// must outlive the form.
Widget* TestForm_Load(Toolkit* toolkit, TestFormContent* content);

// A deterministic star field of w x h at 16 bits: a faint nebula over a sky
// gradient and a few hundred stars.
ImagePtr TestForm_StarField(int32_t width, int32_t height);
