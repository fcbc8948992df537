// Breaking text into lines that fit a width: at line feeds, then greedily at
// spaces; a word too wide for a line of its own is broken between characters.
// Widths come from Font_MeasureText, so wrapped lines draw exactly as wide as
// measured.
#include "ui/font/Font.h"

#include "ui/font/Utf8.h"

#include <algorithm>

namespace {

struct Wrapper {
    const Font& font;
    int32_t pixelHeight;
    std::string_view text;
    int32_t maxWidth;
    std::vector<TextLine> lines;

    int32_t Width(size_t begin, size_t end) const {
        return Font_MeasureText(font, pixelHeight, text.substr(begin, end - begin)).width;
    }

    void Emit(size_t begin, size_t end) {
        while (end > begin && text[end - 1] == ' ') --end;
        lines.push_back({begin, end - begin, Width(begin, end)});
    }

    void Paragraph(size_t begin, size_t end) {
        if (begin == end) return Emit(begin, end);
        size_t start = begin;
        while (start < end) {
            size_t at = start;
            size_t lastSpace = std::string_view::npos;  // the line may end before this space
            size_t fitEnd = start;                      // the longest run of characters that fits
            while (at < end) {
                if (text[at] == ' ' && at > start) lastSpace = at;
                size_t next = at;
                Utf8_Next(text.substr(0, end), &next);
                if (Width(start, next) > maxWidth) break;
                fitEnd = next;
                at = next;
            }
            if (at >= end) return Emit(start, end);
            size_t cut = lastSpace != std::string_view::npos ? lastSpace : fitEnd;
            if (cut == start) Utf8_Next(text.substr(0, end), &cut);  // at least one character per line
            Emit(start, cut);
            start = cut;
            while (start < end && text[start] == ' ') ++start;
        }
    }
};

}  // namespace

std::vector<TextLine> Font_WrapText(const Font& font, int32_t pixelHeight, std::string_view utf8,
                                    int32_t maxWidth) {
    Wrapper w{font, pixelHeight, utf8, maxWidth, {}};
    size_t begin = 0;
    while (true) {
        const size_t end = std::min(utf8.find('\n', begin), utf8.size());
        w.Paragraph(begin, end);
        if (end >= utf8.size()) break;
        begin = end + 1;
    }
    return std::move(w.lines);
}
