// Entity tables, the built-in entities, the metrics derived from the screen
// and character references.
#include "ToolkitFixture.h"

namespace {

std::string Metric(const Toolkit& tk, const char* name) {
    const char* v = Entity_Lookup(&tk.systemEntities, name);
    return v ? v : "(undefined)";
}

TEST(EntityTable, DefineReplacesAndIgnoresEmpty) {
    EntityTable t;
    Entity_Define(&t, "&system-language;", "english");
    Entity_Define(&t, "&system-language;", "deutsch");
    ASSERT_EQ(t.pairs.size(), 1u);
    EXPECT_STREQ(Entity_Lookup(&t, "&system-language;"), "deutsch");
    Entity_Define(&t, "", "x");
    Entity_Define(&t, "&a;", "");
    Entity_Define(&t, nullptr, "x");
    Entity_Define(&t, "&a;", nullptr);
    EXPECT_EQ(t.pairs.size(), 1u);
    EXPECT_EQ(Entity_Lookup(&t, "&System-language;"), nullptr);
}

// The minimal object size is 1/18 of the shorter side, capped at 48, and the
// metric entities derive from it; a square screen counts as portrait.
TEST(SystemMetrics, FollowTheScreen) {
    struct Case {
        uint32_t w, h;
        const char* name;
        const char* value;
    };
    const Case cases[] = {
        {1920, 1080, "&system-minimalobjectsizepixels;", "48"},  // capped
        {1920, 1080, "&system-buttonSizePixels;", "36"},
        {1920, 1080, "&system-sliderHeightPixels;", "36"},
        {1920, 1080, "&system-buttonSizePixelsX2;", "72"},
        {1920, 1080, "&system-buttonSizePixelsX3;", "108"},
        {1920, 1080, "&system-labelInsetPixels;", "15"},
        {1920, 1080, "&system-minimalobjectsizepixelsHalf;", "24"},
        {1920, 1080, "&system-minimalobjectsizepixelsX2;", "96"},
        {1920, 1080, "&system-minimalobjectsizepixelsX16;", "768"},
        {640, 480, "&system-minimalobjectsizepixels;", "26"},
        {640, 480, "&system-buttonSizePixels;", "19"},
        {640, 480, "&system-buttonSizePixelsX2;", "39"},
        {640, 480, "&system-buttonSizePixelsX3;", "58"},
        {640, 480, "&system-labelInsetPixels;", "8"},
        {640, 480, "&system-minimalobjectsizepixelsHalf;", "13"},
        {640, 480, "&system-minimalobjectsizepixelsX3;", "78"},
        {17, 10, "&system-minimalobjectsizepixels;", "1"},  // never below one
        {17, 10, "&system-minimalobjectsizepixelsHalf;", "0"},
        {17, 10, "&system-buttonSizePixels;", "0"},
        {800, 480, "&system-orientation;", "landscape"},
        {480, 800, "&system-orientation;", "portrait"},
        {600, 600, "&system-orientation;", "portrait"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Metric(*ToolkitTest_Screen(c.w, c.h), c.name), c.value) << c.w << " " << c.name;
}

TEST(SystemMetrics, LargeInterfaceCapAndRedefinition) {
    auto tk = ToolkitTest_Screen(1920, 1080);
    Toolkit_SetMinimalObjectSize(tk.get(), 60, 60, 96, 96);
    EXPECT_EQ(Metric(*tk, "&system-minimalobjectsizepixels;"), "60");
    EXPECT_EQ(Metric(*tk, "&system-buttonSizePixels;"), "45");
    // Either side over its cap brings both to the caps.
    Toolkit_SetMinimalObjectSize(tk.get(), 10, 100, 48, 40);
    EXPECT_EQ(tk->minimalObjectSizeX, 48);
    EXPECT_EQ(tk->minimalObjectSizeY, 40);
    size_t count = 0;
    for (const EntityPair& p : tk->systemEntities.pairs)
        if (p.name == "&system-buttonSizePixels;") ++count;
    EXPECT_EQ(count, 1u);
}

// A desktop scale raises the cap in proportion, so a 4K screen at twice the
// density gets the controls and text a 1080p screen gets, in twice the
// pixels; below the cap the screen share rules as before.
TEST(SystemMetrics, DisplayScaleRaisesTheCap) {
    struct Case {
        uint32_t w, h, percent;
        int32_t size, button, text;
    };
    const Case cases[] = {
        {3840, 2160, 100, 48, 36, 18},  // 4K without a scale: as small as on 1080p
        {3840, 2160, 200, 96, 72, 36},  {3840, 2160, 150, 72, 54, 27},
        {3840, 2160, 400, 120, 90, 45},                                // the screen share (2160 / 18) rules
        {2560, 1440, 125, 60, 45, 22},  {1280, 800, 200, 44, 33, 16},  // below the cap: unchanged
    };
    for (const Case& c : cases) {
        auto tk = Toolkit_CreateBare();
        Toolkit_SetScreen(tk.get(), c.w, c.h, c.w, nullptr);
        tk->displayScalePercent = c.percent;
        Toolkit_SetMetricsFromScreen(tk.get());
        EXPECT_EQ(tk->minimalObjectSizeY, c.size) << c.w << " at " << c.percent;
        EXPECT_EQ(Toolkit_MetricPixels(tk.get(), "&system-buttonSizePixels;"), c.button)
            << c.w << " at " << c.percent;
        EXPECT_EQ(Toolkit_TextHeight(tk.get()), c.text) << c.w << " at " << c.percent;
    }
}

TEST(CharacterReferences, NamedAndHexadecimalAndANonHexDigitEndsTheText) {
    for (auto [in, out] : {std::pair<std::string, std::string>{"&quot;a&amp;b&apos;&gt;&lt;", "\"a&b'><"},
                           {"&#xc3;&#xB6;!", "\xc3\xb6!"},
                           {"&unknown; &#12;", "&unknown; &#12;"},
                           {"ab&#xZZ;cd", "ab"},
                           {"ab&#x41", "ab"}}) {
        std::string s = in;
        Entity_DecodeCharacters(&s);
        EXPECT_EQ(s, out) << in;
    }
}

}  // namespace
