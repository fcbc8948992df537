#include "ui/Entity_Table.h"

#include "host/Host_Text.h"

#include <cstring>

namespace {

struct CharacterReference {
    const char* text;
    char byte;
};
constexpr CharacterReference kCharacterReferences[] = {
    {"&quot;", '"'}, {"&amp;", '&'}, {"&apos;", '\''}, {"&gt;", '>'}, {"&lt;", '<'},
};
constexpr const char* kHexReference = "&#x";

}  // namespace

void Entity_Define(EntityTable* table, const char* name, const char* value) {
    if (!table || !name || !*name || !value || !*value) return;
    for (EntityPair& pair : table->pairs)
        if (pair.name == name) {
            pair.value = value;
            return;
        }
    table->pairs.push_back({name, value});
}

const char* Entity_Lookup(const EntityTable* table, std::string_view name) {
    if (!table) return nullptr;
    for (const EntityPair& pair : table->pairs)
        if (pair.name == name) return pair.value.c_str();
    return nullptr;
}

void Entity_DecodeCharacters(std::string* text) {
    if (!text) return;
    std::string& s = *text;
    std::string out;
    out.reserve(s.size());
    for (size_t i = 0; i < s.size();) {
        if (s[i] != '&') {
            out.push_back(s[i++]);
            continue;
        }
        bool named = false;
        for (const CharacterReference& ref : kCharacterReferences) {
            const size_t length = std::strlen(ref.text);
            if (s.compare(i, length, ref.text) == 0) {
                out.push_back(ref.byte);
                i += length;
                named = true;
                break;
            }
        }
        if (named) continue;
        if (s.compare(i, 3, kHexReference) == 0) {
            unsigned value = 0;
            size_t j = i + 3;
            for (; j < s.size() && s[j] != ';'; ++j) {
                const int digit = Host_HexDigit(s[j]);
                if (digit < 0) break;
                value = (value << 4) | static_cast<unsigned>(digit);
            }
            if (j >= s.size() || s[j] != ';') {
                // Not a hex digit: the reference becomes a NUL, which ends the text.
                s = std::move(out);
                return;
            }
            const char byte = static_cast<char>(value & 0xFF);
            if (byte == '\0') {
                s = std::move(out);
                return;
            }
            out.push_back(byte);
            i = j + 1;
            continue;
        }
        out.push_back(s[i++]);
    }
    s = std::move(out);
}
