// The byte-at-a-time markup reader and the tag splitter.
#include "ui/markup/Markup_Reader.h"

#include "ui/Entities.h"

namespace {

// Limits per tag that keep self-referring or exponentially growing entity
// definitions from running away; ordinary forms stay far below them.
constexpr uint32_t kMaxExpansionsPerTag = 4096;
constexpr size_t kMaxBytesPerTag = size_t{1} << 20;
constexpr size_t kMaxReferenceLength = 256;

bool IsBlank(char c) {
    return c == ' ';
}

bool EndsReferenceName(char c) {
    return c == ' ' || c == '"' || c == '<' || c == '>' || c == '=' || c == ';';
}

class TagBuffer {
public:
    explicit TagBuffer(const MarkupReaderHooks& hooks) : hooks_(hooks) {}

    void Clear() {
        text_.clear();
        expansions_ = 0;
        processed_ = 0;
    }
    const std::string& Text() const { return text_; }

    // Appends one byte and expands the reference it completes; the value is
    // scanned again from where the reference began.
    void Append(char c) {
        pending_.push_back(c);
        while (!pending_.empty()) {
            const char next = pending_.back();
            pending_.pop_back();
            if (++processed_ > kMaxBytesPerTag) {
                pending_.clear();
                return;
            }
            text_.push_back(next);
            if (next == ';') ExpandTail();
        }
    }

private:
    void ExpandTail() {
        if (!hooks_.lookup || expansions_ >= kMaxExpansionsPerTag) return;
        const size_t end = text_.size() - 1;  // the ';'
        size_t start = end;
        while (start > 0 && end - start < kMaxReferenceLength) {
            const char c = text_[start - 1];
            if (c == '&') break;
            if (EndsReferenceName(c)) return;
            --start;
        }
        if (start == 0 || text_[start - 1] != '&' || start == end) return;
        const size_t amp = start - 1;
        const char* value = hooks_.lookup(hooks_.user, std::string_view(text_).substr(amp));
        if (!value) return;
        ++expansions_;
        text_.resize(amp);
        // Pushed in reverse: the value's first byte is read next.
        for (const char* p = value + std::char_traits<char>::length(value); p != value;)
            pending_.push_back(*--p);
    }

    const MarkupReaderHooks& hooks_;
    std::string text_;
    std::string pending_;
    uint32_t expansions_ = 0;
    size_t processed_ = 0;
};

}  // namespace

void Markup_Read(const uint8_t* data, size_t size, const MarkupReaderHooks& hooks) {
    TagBuffer buffer(hooks);
    bool inTag = false;
    for (size_t i = 0; i < size; ++i) {
        const char c = static_cast<char>(data[i]);
        if (data[i] < 32) continue;
        if (!inTag) {
            if (c == '<') {
                inTag = true;
                buffer.Clear();
            }
            continue;
        }
        if (c == '>') {
            inTag = false;
            const MarkupTag tag = Markup_ParseTag(buffer.Text());
            if (hooks.tag && !tag.name.empty()) hooks.tag(hooks.user, tag);
            continue;
        }
        buffer.Append(c);
    }
}

MarkupTag Markup_ParseTag(std::string_view text) {
    MarkupTag tag;
    size_t i = 0;
    const size_t n = text.size();
    while (i < n && IsBlank(text[i])) ++i;
    if (i < n && text[i] == '/') {
        tag.closing = true;
        ++i;
    }
    const size_t nameStart = i;
    while (i < n && !IsBlank(text[i]) && !(text[i] == '/' && i + 1 == n)) ++i;
    tag.name = std::string(text.substr(nameStart, i - nameStart));
    while (i < n) {
        while (i < n && IsBlank(text[i])) ++i;
        if (i >= n) break;
        if (text[i] == '/' && i + 1 == n) {
            tag.selfClosing = true;
            break;
        }
        const size_t attrStart = i;
        while (i < n && !IsBlank(text[i]) && text[i] != '=') ++i;
        MarkupAttribute attribute;
        attribute.name = std::string(text.substr(attrStart, i - attrStart));
        if (i < n && text[i] == '=') {
            ++i;
            attribute.hasValue = true;
            if (i < n && text[i] == '"') {
                const size_t valueStart = ++i;
                while (i < n && text[i] != '"') ++i;
                attribute.value = std::string(text.substr(valueStart, i - valueStart));
                if (i < n) ++i;
            } else {
                const size_t valueStart = i;
                while (i < n && !IsBlank(text[i])) ++i;
                attribute.value = std::string(text.substr(valueStart, i - valueStart));
            }
            Entity_DecodeCharacters(&attribute.value);
        }
        if (!attribute.name.empty()) tag.attributes.push_back(std::move(attribute));
    }
    return tag;
}
