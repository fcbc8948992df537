// Readers decide by content: every sample file is refused by each of these
// readers except its own, whatever its name says. (The FITS reader has its own
// tests.)
#include "formats/Bmp_Read.h"
#include "formats/Jpeg_Read.h"
#include "formats/Png_Read.h"
#include "formats/Raw_Read.h"
#include "formats/Tiff_Read.h"
#include "image/Image.h"
#include "support/Manifest.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

TEST(Readers, EachSampleIsRefusedByTheOtherReaders) {
    PELLUCIDA_REQUIRE_DATA(manifest, "expected.json");
    const struct {
        const char* name;
        ImageBuffer* (*read)(const char*);
    } readers[] = {{"BMP", &Bmp_Read},
                   {"TIFF", &Tiff_Read},
                   {"raw", &Raw_Read},
                   {"PNG", &Png_Read},
                   {"JPEG", &Jpeg_Read}};
    const auto entries = Manifest_Entries("");
    ASSERT_GE(entries.size(), 80u);
    for (const ManifestEntry& e : entries) {
        const std::string path = TestData_Path(e.file);
        ASSERT_FALSE(path.empty()) << e.file;
        for (const auto& r : readers) {
            if (e.reader == r.name) continue;
            ImagePtr image(r.read(path.c_str()));
            EXPECT_EQ(image, nullptr) << r.name << " reader took " << e.file;
        }
    }
}
