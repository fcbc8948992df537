// AutoDev's parameter rows and the settings they give.
#include "modules/autodev/AutoDev_Params.h"

#include <algorithm>

namespace {

constexpr double kBlurStep = 0.05;
constexpr double kBlurBase = 0.5;
constexpr double kPercent = 0.01;

constexpr ModuleParam kRows[] = {
    {"blur", nullptr, ModuleParams_Id("LvS1"), Param_Field<&AutoDevParams::blur>, 0, 490, ParamExtent::Fixed,
     "Detail Blur", ValueLabelKind::TenthPixelsFromOne, "off", nullptr},
    {"outside", nullptr, ModuleParams_Id("LvS2"), Param_Field<&AutoDevParams::outside>, 0, 100,
     ParamExtent::Fixed, "Outside RoI Influence", ValueLabelKind::Percent, nullptr, nullptr},
    {"x0", "roi", ModuleParams_Id("LvS3"), Param_Field<&AutoDevParams::roiX0>, 0, 0, ParamExtent::Width,
     "RoI X1", ValueLabelKind::Pixels, nullptr, nullptr},
    {"y0", "roi", ModuleParams_Id("LvS4"), Param_Field<&AutoDevParams::roiY0>, 0, 0, ParamExtent::Height,
     "RoI Y1", ValueLabelKind::Pixels, nullptr, nullptr},
    {"x1", "roi", ModuleParams_Id("LvS5"), Param_Field<&AutoDevParams::roiX1>, 0, 0, ParamExtent::Width,
     "RoI X2", ValueLabelKind::PixelsAndRestX, nullptr, nullptr},
    {"y1", "roi", ModuleParams_Id("LvS6"), Param_Field<&AutoDevParams::roiY1>, 0, 0, ParamExtent::Height,
     "RoI Y2", ValueLabelKind::PixelsAndRestY, nullptr, nullptr},
    {"curve", nullptr, ModuleParams_Id("LvS7"), Param_Field<&AutoDevParams::curve>, 0, 1000,
     ParamExtent::Fixed, "Curve Exponent", ValueLabelKind::Hundredths, nullptr, nullptr},
    {"tone", nullptr, ModuleParams_Id("LvS8"), Param_Field<&AutoDevParams::tone>, 0, 100, ParamExtent::Fixed,
     "Tone Blend", ValueLabelKind::Percent, nullptr, nullptr},
};

}  // namespace

std::span<const ModuleParam> AutoDev_ParamTable() {
    return kRows;
}

bool AutoDev_ParamsMonochrome(const AutoDevParams& params, const ImageBuffer* image) {
    return params.monochrome < 0 ? AutoDev_IsMonochrome(image) : params.monochrome != 0;
}

AutoDevSettings AutoDev_Settings(const AutoDevParams& params, int32_t width, int32_t height,
                                 bool monochrome) {
    // Every position as its setter would hold it for this image.
    AutoDevParams p;
    for (const ModuleParam& row : kRows)
        ModuleParams_Set(row, &p, ModuleParams_Position(row, &params, width, height));
    AutoDevSettings s;
    s.p1 = p.blur * kBlurStep + kBlurBase;
    s.p2 = p.curve * kPercent;
    s.p3 = p.tone * kPercent;
    s.p4 = p.outside * kPercent;
    s.roiX = std::min(p.roiX0, p.roiX1);
    s.roiY = std::min(p.roiY0, p.roiY1);
    s.roiWidth = std::max(p.roiX0, p.roiX1) - s.roiX;
    s.roiHeight = std::max(p.roiY0, p.roiY1) - s.roiY;
    const int64_t roiArea = int64_t{s.roiWidth} * s.roiHeight;
    if (roiArea != 0)
        s.p4 = s.p4 * (static_cast<double>(roiArea) / static_cast<double>(int64_t{width} * height));
    s.monochrome = monochrome;
    return s;
}
