// The interface scale on desktops that report none, and its way to the
// toolkit through the "video" driver.
#include "host/HostFixture.h"
#include "host/Host_DisplayScale.h"
#include "ui/Entities.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_Create.h"

#include "support/Files.h"

namespace {

TEST(DisplayScale, UserSettingThenFontDensityThenPhysicalDensity) {
    struct Case {
        const char* gdkScale;
        double xftDpi, screenDpi, scale;
    };
    const Case cases[] = {
        {nullptr, 0, 0, 1.0},                              // nothing known
        {"2", 96, 96, 2.0},                                // the user's own factor wins
        {"3", 0, 0, 3.0},        {"9", 0, 0, 4.0},         // capped
        {"0", 192, 0, 2.0},                                // not a factor: the next source
        {"1.5", 144, 0, 1.5},                              // GDK takes whole factors only
        {"", 120, 0, 1.25},      {nullptr, 96, 280, 1.0},  // the desktop's setting beats the screen's size
        {nullptr, 192, 0, 2.0},  {nullptr, 144, 0, 1.5},
        {nullptr, 110, 0, 1.25},                         // quarter steps, nearest
        {nullptr, 100, 0, 1.0},  {nullptr, 72, 0, 1.0},  // never below 1
        {nullptr, 480, 0, 4.0},  {nullptr, 0, 96, 1.0},
        {nullptr, 0, 130, 1.0},                           // physical density: half steps from 1.5 up
        {nullptr, 0, 140, 1.5},  {nullptr, 0, 163, 1.5},  // 27-inch 4K
        {nullptr, 0, 184, 2.0},                           // 24-inch 4K
        {nullptr, 0, 282, 3.0},                           // 15.6-inch 4K
        {nullptr, 0, 1200, 1.0},                          // no screen is that dense: a broken description
        {nullptr, 0, 30, 1.0},
    };
    for (const Case& c : cases)
        EXPECT_EQ(HostDisplay_ChooseScale(c.gdkScale, c.xftDpi, c.screenDpi), c.scale)
            << (c.gdkScale ? c.gdkScale : "(unset)") << " " << c.xftDpi << " " << c.screenDpi;
}

TEST(DisplayScale, XftDpiFromTheResourceDatabase) {
    struct Case {
        const char* resources;
        double dpi;
    };
    const Case cases[] = {
        {"Xft.antialias:\t1\nXft.dpi:\t192\nXft.hinting:\t1\n", 192},
        {"Xft.dpi:\t144.5", 144.5},  // the last line need not end
        {"Xft.dpi: 120 \n", 120},
        {"*.dpi:\t192\nXTerm*Xft.dpi:\t200\n", 0},  // other resources of the same name
        {"Xft.dpi:\tlarge\n", 0},
        {"Xft.dpi:\t96x\n", 0},
        {"Xft.dpi:\t-96\n", 0},
        {"", 0},
    };
    for (const Case& c : cases) EXPECT_EQ(HostDisplay_XftDpi(c.resources), c.dpi) << c.resources;
}

using DisplayScaleRun = HostTest;

TEST_F(DisplayScaleRun, TheToolkitTakesTheBackendScaleInPercent) {
    auto tk = Toolkit_CreateBare();
    Toolkit_MeasureDisplayScale(tk.get());
    EXPECT_EQ(tk->displayScalePercent, 100u);
    for (const auto& [env, percent] : {std::pair{"1.5", 150u}, {"2", 200u}, {"0.5", 100u}, {"9", 400u}}) {
        EnvScope scale("PELLUCIDA_HEADLESS_SCALE", env);
        Toolkit_MeasureDisplayScale(tk.get());
        EXPECT_EQ(tk->displayScalePercent, percent) << env;
    }
}

TEST(DisplayScaleNoHost, WithoutAVideoDriverTheScaleIsOne) {
    auto tk = Toolkit_CreateBare();
    tk->displayScalePercent = 250;
    Toolkit_MeasureDisplayScale(tk.get());
    EXPECT_EQ(tk->displayScalePercent, 100u);
}

}  // namespace
