// Drawing and editing of single-line fields.
#include "ui/widgets/Field.h"

#include "ui/Theme.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/draw/Draw_Rect.h"
#include "ui/draw/Draw_RoundRect.h"
#include "ui/font/Utf8.h"
#include "ui/widgets/Widget_Paint.h"

#include <algorithm>

namespace {

void AppendUtf8(std::string* out, size_t at, uint32_t code) {
    char bytes[4];
    size_t n = 0;
    if (code < 0x80) {
        bytes[n++] = static_cast<char>(code);
    } else if (code < 0x800) {
        bytes[n++] = static_cast<char>(0xC0 | (code >> 6));
        bytes[n++] = static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        bytes[n++] = static_cast<char>(0xE0 | (code >> 12));
        bytes[n++] = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        bytes[n++] = static_cast<char>(0x80 | (code & 0x3F));
    } else {
        bytes[n++] = static_cast<char>(0xF0 | (code >> 18));
        bytes[n++] = static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        bytes[n++] = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        bytes[n++] = static_cast<char>(0x80 | (code & 0x3F));
    }
    out->insert(at, bytes, n);
}

}  // namespace

bool Field_EditKey(std::string* text, size_t* caret, uint32_t key, bool multiLine) {
    if (*caret > text->size()) *caret = text->size();
    if (key == kKeyBackspace) {
        if (*caret == 0) return true;
        size_t start = *caret - 1;
        while (start > 0 && (static_cast<uint8_t>((*text)[start]) & 0xC0) == 0x80) --start;
        text->erase(start, *caret - start);
        *caret = start;
        return true;
    }
    if (key == kKeyEnter) {
        if (!multiLine) return false;
        text->insert(*caret, 1, '\n');
        ++*caret;
        return true;
    }
    if (key < 32 || key == 127 || key > 0x10FFFF) return false;
    const size_t before = text->size();
    AppendUtf8(text, *caret, key);
    *caret += text->size() - before;
    return true;
}

size_t Field_CaretAt(const Font* font, int32_t pixelHeight, const std::string& text, int32_t left,
                     int32_t x) {
    if (!font) return text.size();
    size_t best = 0;
    int32_t bestDistance = std::abs(x - left);
    for (size_t at = 0; at < text.size();) {
        Utf8_Next(text, &at);
        const int32_t edge =
            left + Font_MeasureText(*font, pixelHeight, std::string_view(text).substr(0, at)).width;
        const int32_t distance = std::abs(x - edge);
        if (distance < bestDistance) best = at, bestDistance = distance;
    }
    return best;
}

namespace {

// Where the text starts so that the caret stays in view: long texts scroll left.
int32_t TextLeft(const WidgetPaint& paint, const DrawRect& inner, const std::string& text, size_t caret,
                 uint32_t align) {
    const int32_t width = Paint_TextWidth(paint, text);
    if (width <= inner.width) {
        // Right-aligned text leaves room for the caret after its last character.
        if (align & kAlignRight) return inner.x + inner.width - width - 2;
        if (align & kAlignCenter) return inner.x + (inner.width - width) / 2;
        return inner.x;
    }
    const int32_t caretX = Paint_TextWidth(paint, std::string_view(text).substr(0, caret));
    return inner.x + std::min(0, inner.width - caretX - 1);
}

void Draw(Toolkit* toolkit, Widget* widget, FieldRecord* record) {
    WidgetPaint paint = Widget_BeginPaint(toolkit, widget);
    Surface& s = *paint.surface;
    const int32_t gap = std::max(1, Theme_Gap(toolkit) / 2);
    const DrawRect body = Paint_Inset(paint.rect, gap);
    if (Draw_IsEmpty(body)) return;
    const float radius = static_cast<float>(Theme_Radius(body.height));
    const bool focused = toolkit->input.focus == widget;
    Draw_FillRoundRect(s, body, radius, theme::kWell);
    Draw_StrokeRoundRect(s, body, radius, 1.0f, focused ? theme::kAccent : theme::kBorder);
    if (!paint.font) return;
    const int32_t pad = std::max(3, paint.textHeight / 2);
    const DrawRect inner{body.x + pad, body.y, body.width - 2 * pad, body.height};
    const size_t caret = std::min(record->caret, record->text.size());
    const int32_t left = TextLeft(paint, inner, record->text, caret, record->align);
    {
        ClipScope clip(s, inner);
        Font_DrawText(s, *paint.font, left, Paint_Baseline(paint, body), paint.textHeight, record->text,
                      theme::kText);
        if (focused) {
            const int32_t x = left + Paint_TextWidth(paint, std::string_view(record->text).substr(0, caret));
            const TextMetrics m = Font_MeasureText(*paint.font, paint.textHeight, "");
            const int32_t baseline = Paint_Baseline(paint, body);
            Draw_FillRect(s, {x, baseline - m.ascent, 1, m.ascent + m.descent}, theme::kAccent);
        }
    }
}

}  // namespace

int Field_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event) {
    auto* record = Widget_Record<FieldRecord>(widget);
    if (!record) return 0;
    switch (event->code) {
        case kEventDraw:
            Draw(toolkit, widget, record);
            return 1;
        case kEventPress: {
            WidgetPaint paint = Widget_BeginPaint(toolkit, widget);
            const int32_t gap = std::max(1, Theme_Gap(toolkit) / 2);
            const int32_t pad = std::max(3, paint.textHeight / 2);
            const DrawRect body = Paint_Inset(paint.rect, gap);
            const DrawRect inner{body.x + pad, body.y, body.width - 2 * pad, body.height};
            const size_t caret = std::min(record->caret, record->text.size());
            const int32_t left = TextLeft(paint, inner, record->text, caret, record->align);
            record->caret = Field_CaretAt(paint.font, paint.textHeight, record->text, left,
                                          static_cast<int32_t>(event->payload[0]));
            Toolkit_Invalidate(toolkit, widget);
            return 1;
        }
        case kEventDrag:
        case kEventRelease:
            return 1;
        case kEventCharacter: {
            const uint32_t key = event->payload[0];
            if (key == kKeyEnter) {
                if (record->onEnter) record->onEnter(toolkit, widget, record->user);
                return 1;
            }
            size_t caret = std::min(record->caret, record->text.size());
            if (!Field_EditKey(&record->text, &caret, key, false)) return 0;
            record->caret = caret;
            Toolkit_Invalidate(toolkit, widget);
            if (record->onChange) record->onChange(toolkit, widget, record->user);
            return 1;
        }
        default:
            return 0;
    }
}

void Field_SetText(Toolkit* toolkit, Widget* field, const std::string& text) {
    if (auto* f = Widget_Record<FieldRecord>(field)) {
        f->text = text;
        f->caret = std::string::npos;
    } else if (auto* m = Widget_Record<FieldMultiRecord>(field)) {
        m->text = text;
        m->caret = std::string::npos;
    } else {
        return;
    }
    Toolkit_Invalidate(toolkit, field);
}

const std::string* Field_Text(const Widget* field) {
    if (const auto* f = Widget_Record<FieldRecord>(field)) return &f->text;
    if (const auto* m = Widget_Record<FieldMultiRecord>(field)) return &m->text;
    return nullptr;
}
