// Entity tables, the built-in entities, the metrics derived from the screen
// and character references.
#include "ui/Entities.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_Create.h"

#include <gtest/gtest.h>

namespace {

std::string Metric(const Toolkit& tk, const char* name) {
    const char* v = Entity_Lookup(&tk.systemEntities, name);
    return v ? v : "(undefined)";
}

std::unique_ptr<Toolkit> WithScreen(uint32_t w, uint32_t h) {
    auto tk = Toolkit_CreateBare();
    Toolkit_SetScreen(tk.get(), w, h, w, nullptr);
    Toolkit_SetMetricsFromScreen(tk.get());
    return tk;
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

TEST(SystemEntities, BuiltInsOfANewContext) {
    auto tk = Toolkit_CreateBare();
    EXPECT_EQ(Metric(*tk, "&ouml;"), "&#xc3;&#xb6;");
    EXPECT_EQ(Metric(*tk, "&lf;"), "\n");
    EXPECT_EQ(Metric(*tk, "&system-language;"), "english");
    EXPECT_EQ(Metric(*tk, "&system-onscreenkeyboard;"), "false");
    EXPECT_EQ(Metric(*tk, "&system-quickkey;"), "false");
    EXPECT_EQ(Metric(*tk, "&system-userhandedness;"), "right");
    EXPECT_EQ(Metric(*tk, "&system-osname;"), "unknown");
}

TEST(SystemEntities, OrientationFollowsTheScreen) {
    EXPECT_EQ(Metric(*WithScreen(800, 480), "&system-orientation;"), "landscape");
    EXPECT_EQ(Metric(*WithScreen(480, 800), "&system-orientation;"), "portrait");
    EXPECT_EQ(Metric(*WithScreen(600, 600), "&system-orientation;"), "portrait");
}

TEST(SystemMetrics, FullHdIsCappedAt48) {
    auto tk = WithScreen(1920, 1080);
    EXPECT_EQ(tk->minimalObjectSizeX, 48);
    EXPECT_EQ(tk->minimalObjectSizeY, 48);
    EXPECT_EQ(Metric(*tk, "&system-buttonSizePixels;"), "36");
    EXPECT_EQ(Metric(*tk, "&system-sliderHeightPixels;"), "36");
    EXPECT_EQ(Metric(*tk, "&system-buttonSizePixelsX2;"), "72");
    EXPECT_EQ(Metric(*tk, "&system-buttonSizePixelsX3;"), "108");
    EXPECT_EQ(Metric(*tk, "&system-labelInsetPixels;"), "15");
    EXPECT_EQ(Metric(*tk, "&system-minimalobjectsizepixelsHalf;"), "24");
    EXPECT_EQ(Metric(*tk, "&system-minimalobjectsizepixels;"), "48");
    EXPECT_EQ(Metric(*tk, "&system-minimalobjectsizepixelsX2;"), "96");
    EXPECT_EQ(Metric(*tk, "&system-minimalobjectsizepixelsX16;"), "768");
    EXPECT_EQ(Toolkit_MetricPixels(tk.get(), "&system-buttonSizePixels;"), 36);
}

TEST(SystemMetrics, VgaGives26) {
    auto tk = WithScreen(640, 480);
    EXPECT_EQ(tk->minimalObjectSizeX, 26);
    EXPECT_EQ(Metric(*tk, "&system-buttonSizePixels;"), "19");
    EXPECT_EQ(Metric(*tk, "&system-buttonSizePixelsX2;"), "39");
    EXPECT_EQ(Metric(*tk, "&system-buttonSizePixelsX3;"), "58");
    EXPECT_EQ(Metric(*tk, "&system-labelInsetPixels;"), "8");
    EXPECT_EQ(Metric(*tk, "&system-minimalobjectsizepixelsHalf;"), "13");
    EXPECT_EQ(Metric(*tk, "&system-minimalobjectsizepixelsX3;"), "78");
}

TEST(SystemMetrics, TinyScreenGivesOneAndHalfZero) {
    auto tk = WithScreen(17, 10);
    EXPECT_EQ(tk->minimalObjectSizeX, 1);
    EXPECT_EQ(tk->minimalObjectSizeY, 1);
    EXPECT_EQ(Metric(*tk, "&system-minimalobjectsizepixelsHalf;"), "0");
    EXPECT_EQ(Metric(*tk, "&system-minimalobjectsizepixels;"), "1");
    EXPECT_EQ(Metric(*tk, "&system-buttonSizePixels;"), "0");
}

TEST(SystemMetrics, LargeInterfaceCapAndRedefinition) {
    auto tk = WithScreen(1920, 1080);
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

TEST(CharacterReferences, NamedAndHexadecimal) {
    std::string s = "&quot;a&amp;b&apos;&gt;&lt;";
    Entity_DecodeCharacters(&s);
    EXPECT_EQ(s, "\"a&b'><");
    s = "&#xc3;&#xB6;!";
    Entity_DecodeCharacters(&s);
    EXPECT_EQ(s, "\xc3\xb6!");
    s = "&unknown; &#12;";
    Entity_DecodeCharacters(&s);
    EXPECT_EQ(s, "&unknown; &#12;");
}

TEST(CharacterReferences, NonHexDigitEndsTheText) {
    std::string s = "ab&#xZZ;cd";
    Entity_DecodeCharacters(&s);
    EXPECT_EQ(s, "ab");
    s = "ab&#x41";
    Entity_DecodeCharacters(&s);
    EXPECT_EQ(s, "ab");
}

}  // namespace
