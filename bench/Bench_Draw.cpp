// The painter and the font on a full-HD framebuffer: a whole frame of
// rounded buttons, a flat clear, and about 200 words of 12 px text, with the
// glyphs already rendered (the usual redraw) and rendered afresh.
#include "ui/draw/Draw_Rect.h"
#include "ui/draw/Draw_RoundRect.h"
#include "ui/font/Font.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int32_t kWidth = 1920;
constexpr int32_t kHeight = 1080;

struct Frame {
    std::vector<uint32_t> pixels = std::vector<uint32_t>(size_t(kWidth) * kHeight);
    Surface surface = Draw_MakeSurface(pixels.data(), kWidth, kWidth, kHeight);
};

// The shipped font, found beside this source file.
std::unique_ptr<Font> LoadFont() {
    const std::filesystem::path path =
        std::filesystem::path(__FILE__).parent_path() / ".." / "resources" / "font.fnt";
    std::ifstream in(path, std::ios::binary);
    const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return Font_Load(bytes.data(), bytes.size());
}

const char* const kWords =
    "The stacked image is still linear, so the first step is a global stretch that lifts the faint nebula "
    "out of the background while the cores of the brightest stars stay unclipped. AutoDev finds the "
    "stretch from the histogram of the whole frame; after it, Wipe removes the gradient left by light "
    "pollution and the moon, and Color balances the channels against the average star. ";

std::string TwoHundredWords() {
    std::string text;
    int words = 0;
    while (words < 200) {
        text += kWords;
        words = 0;
        for (char c : text) words += c == ' ';
    }
    return text;
}

void BM_Draw_ClearFrame(benchmark::State& state) {
    Frame f;
    for (auto _ : state) {
        Draw_FillRect(f.surface, {0, 0, kWidth, kHeight}, 0x18E4);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Draw_ClearFrame)->Unit(benchmark::kMicrosecond);

// 15 x 28 glossy buttons of 120 x 36 with a border: the frame covered once over.
void BM_Draw_RoundedButtonsFrame(benchmark::State& state) {
    Frame f;
    for (auto _ : state) {
        for (int32_t y = 0; y + 36 <= kHeight; y += 38)
            for (int32_t x = 0; x + 120 <= kWidth; x += 128) {
                Draw_FillRoundRectGradient(f.surface, {x, y, 120, 36}, 7.0f, 0x5B0E, 0x39E9);
                Draw_StrokeRoundRect(f.surface, {x, y, 120, 36}, 7.0f, 1.0f, 0x4A4A);
            }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Draw_RoundedButtonsFrame)->Unit(benchmark::kMicrosecond);

void BM_Font_DrawWords12px(benchmark::State& state) {
    const auto font = LoadFont();
    if (!font) return state.SkipWithError("resources/font.fnt not found");
    const std::string text = TwoHundredWords();
    Frame f;
    int64_t glyphs = 0;
    for (char c : text) glyphs += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    // Lines of about 100 characters, as a help text would be laid out.
    std::vector<TextLine> lines = Font_WrapText(*font, 12, text, 640);
    for (auto _ : state) {
        int32_t y = 20;
        for (const TextLine& l : lines) {
            Font_DrawText(f.surface, *font, 20, y, 12, std::string_view(text).substr(l.begin, l.length),
                          0xE73C);
            y += 15;
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * glyphs);
    // Seconds per glyph (printed with an SI prefix: "150n" is 150 ns).
    state.counters["per_glyph"] = benchmark::Counter(
        double(glyphs), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_Font_DrawWords12px)->Unit(benchmark::kMicrosecond);

// Every glyph of the font rendered afresh: what a new text size costs once.
void BM_Font_RenderAllGlyphs(benchmark::State& state) {
    const auto font = LoadFont();
    if (!font) return state.SkipWithError("resources/font.fnt not found");
    const int32_t height = static_cast<int32_t>(state.range(0));
    // One string per character, each drawn at the left edge, so that none is skipped as clipped.
    std::vector<std::string> characters;
    for (uint16_t cp : font->codePoints) {
        std::string c;
        if (cp < 0x80) {
            c += char(cp);
        } else if (cp < 0x800) {
            c += char(0xC0 | (cp >> 6)), c += char(0x80 | (cp & 0x3F));
        } else {
            c += char(0xE0 | (cp >> 12)), c += char(0x80 | ((cp >> 6) & 0x3F)), c += char(0x80 | (cp & 0x3F));
        }
        characters.push_back(c);
    }
    Frame f;
    for (auto _ : state) {
        font->cache.clear();
        for (const std::string& c : characters) Font_DrawText(f.surface, *font, 0, 100, height, c, 0xFFFF);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * int64_t(font->codePoints.size()));
    state.counters["per_glyph"] =
        benchmark::Counter(double(font->codePoints.size()),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_Font_RenderAllGlyphs)->Arg(12)->Arg(18)->Arg(32)->Unit(benchmark::kMicrosecond);

}  // namespace
