// Entity tables, the built-in entities, the metrics derived from the screen
// and character references.
#include "ToolkitFixture.h"

#include <sstream>
#include <tuple>

namespace {

std::string Metric(const Toolkit& tk, const char* name) {
    const char* v = Entity_Lookup(&tk.systemEntities, name);
    return v ? v : "(undefined)";
}

TEST(EntityTable, DefineReplacesAndIgnoresEmptyAndCharacterReferencesDecode) {
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
    // Character references: named and hexadecimal, and a non-hex digit ends the text.
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

// The minimal object size is 1/18 of the shorter side, capped at 48, and the
// metric entities derive from it; a square screen counts as portrait.
TEST(SystemMetrics, FollowTheScreenTheLargeInterfaceCapAndADisplayScale) {
    // "name=value" words, the names without their "&system-" and ";".
    const std::tuple<uint32_t, uint32_t, const char*> cases[] = {
        {1920, 1080,
         "minimalobjectsizepixels=48 buttonSizePixels=36 sliderHeightPixels=36 buttonSizePixelsX2=72 "
         "buttonSizePixelsX3=108 labelInsetPixels=15 minimalobjectsizepixelsHalf=24 "
         "minimalobjectsizepixelsX2=96 minimalobjectsizepixelsX16=768"},  // capped
        {640, 480,
         "minimalobjectsizepixels=26 buttonSizePixels=19 buttonSizePixelsX2=39 buttonSizePixelsX3=58 "
         "labelInsetPixels=8 minimalobjectsizepixelsHalf=13 minimalobjectsizepixelsX3=78"},
        // Never below one.
        {17, 10, "minimalobjectsizepixels=1 minimalobjectsizepixelsHalf=0 buttonSizePixels=0"},
        {800, 480, "orientation=landscape"},
        {480, 800, "orientation=portrait"},
        {600, 600, "orientation=portrait"},
    };
    for (const auto& [w, h, metrics] : cases) {
        std::istringstream words(metrics);
        for (std::string word; words >> word;) {
            const size_t eq = word.find('=');
            const std::string name = "&system-" + word.substr(0, eq) + ";";
            EXPECT_EQ(Metric(*ToolkitTest_Screen(w, h), name.c_str()), word.substr(eq + 1))
                << w << " " << name;
        }
    }
    // A large interface raises the cap; the entities are defined again, not twice.
    auto tk = ToolkitTest_Screen(1920, 1080);
    Toolkit_SetMinimalObjectSize(tk.get(), 60, 60, 96, 96);
    EXPECT_EQ(Metric(*tk, "&system-minimalobjectsizepixels;"), "60");
    EXPECT_EQ(Metric(*tk, "&system-buttonSizePixels;"), "45");
    // Either side over its cap brings both to the caps.
    Toolkit_SetMinimalObjectSize(tk.get(), 10, 100, 48, 40);
    EXPECT_EQ(std::pair(tk->minimalObjectSizeX, tk->minimalObjectSizeY), std::pair(48, 40));
    size_t count = 0;
    for (const EntityPair& p : tk->systemEntities.pairs)
        if (p.name == "&system-buttonSizePixels;") ++count;
    EXPECT_EQ(count, 1u);
    // A desktop scale raises the cap in proportion, so a 4K screen at twice the
    // density gets the controls and text a 1080p screen gets, in twice the
    // pixels; below the cap the screen share rules as before.
    struct Case {
        uint32_t w, h, percent;
        int32_t size, button, text;
    };
    const Case scales[] = {
        {3840, 2160, 100, 48, 36, 18},  // 4K without a scale: as small as on 1080p
        {3840, 2160, 200, 96, 72, 36},  {3840, 2160, 150, 72, 54, 27},
        {3840, 2160, 400, 120, 90, 45},                                // the screen share (2160 / 18) rules
        {2560, 1440, 125, 60, 45, 22},  {1280, 800, 200, 44, 33, 16},  // below the cap: unchanged
    };
    for (const Case& c : scales) {
        auto scaled = Toolkit_CreateBare();
        Toolkit_SetScreen(scaled.get(), c.w, c.h, c.w, nullptr);
        scaled->displayScalePercent = c.percent;
        Toolkit_SetMetricsFromScreen(scaled.get());
        SCOPED_TRACE(testing::Message() << c.w << " at " << c.percent);
        EXPECT_EQ(scaled->minimalObjectSizeY, c.size);
        EXPECT_EQ(Toolkit_MetricPixels(scaled.get(), "&system-buttonSizePixels;"), c.button);
        EXPECT_EQ(Toolkit_TextHeight(scaled.get()), c.text);
    }
}

}  // namespace
