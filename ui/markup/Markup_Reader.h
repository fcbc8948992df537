// Reading form markup byte by byte into tags. Bytes below 32 are dropped;
// entity references are expanded as soon as they complete, so a value may
// itself hold references. The reader knows nothing of widgets: each finished
// tag goes to a callback, which may define entities that the following tags
// see.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct MarkupAttribute {
    std::string name;
    std::string value;      // expanded, character references decoded
    bool hasValue = false;  // false for a bare flag
};

struct MarkupTag {
    std::string name;  // without the "/" of a closing tag
    bool closing = false;
    bool selfClosing = false;  // "<NAME ... />": opened and closed at once
    std::vector<MarkupAttribute> attributes;
};

// The value of a complete reference ("&name;"), or null when it is unknown.
using MarkupLookupFn = const char* (*)(void* user, std::string_view reference);
using MarkupTagFn = void (*)(void* user, const MarkupTag& tag);

struct MarkupReaderHooks {
    MarkupLookupFn lookup = nullptr;
    MarkupTagFn tag = nullptr;
    void* user = nullptr;
};

void Markup_Read(const uint8_t* data, size_t size, const MarkupReaderHooks& hooks);

// Splits the text of a tag (between "<" and ">", already expanded) into its
// name and attributes.
MarkupTag Markup_ParseTag(std::string_view text);
