// The `resources` archive that the build makes, read through the program's
// own reader (itself checked against the file layout in Archive_test): every
// file of resources/ is there with its bytes and the test form parses cleanly.
// (Markup_test makes every widget kind; the widget tests reach the test form's
// widgets by identifier. Every icon the build packs is drawn in the toolkit's
// golden pictures: information and alert on the test form, the others in the
// message boxes.)
#include "ToolkitFixture.h"
#include "support/Files.h"
#include "ui/markup/Markup_Form.h"

namespace fs = std::filesystem;

namespace {

TEST_F(ToolkitTest, TheArchiveHoldsEveryFileOfResourcesWithItsBytes) {
    for (const auto& item :
         fs::recursive_directory_iterator(fs::path(PELLUCIDA_TEST_SOURCE_DIR) / ".." / "resources")) {
        if (!item.is_regular_file()) continue;
        const std::string name = item.path().filename().string();
        EXPECT_EQ(ResourceArchive_LoadWhole(tk->archive.get(), name.c_str()), ReadFileBytes(item.path()))
            << name;
    }
}

TEST_F(ToolkitTest, TestFormParsesWithItsSectionsAndButtonRow) {
    testing::internal::CaptureStdout();
    Form_Load(tk.get(), kTestFormEntry, form);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "the form's markup is balanced";
    EXPECT_EQ(form->id, Widget_PackId("TstF"));
    // The on-screen keyboard section is off by default; the numeric one is not in a section.
    EXPECT_EQ(Widget_FindById(form, Widget_PackId("Keyb")), nullptr);
    EXPECT_NE(Widget_FindById(form, Widget_PackId("KbNm")), nullptr);
    EXPECT_EQ(Widget_Record<ButtonRecord>(W("BtKp"))->text, "Keep");
    // The button row keeps its minimum height at the bottom of the screen.
    const PixelRect row = R(W("TsBt"));
    EXPECT_GE(row.height, Toolkit_MetricPixels(tk.get(), "&system-buttonSizePixelsX2;"));
    EXPECT_EQ(row.y + row.height, height);
}

}  // namespace
