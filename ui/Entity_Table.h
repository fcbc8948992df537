// Entity tables: named texts that markup refers to as "&name;", and the
// character references of attribute values. Plain data, no context.
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct EntityPair {
    std::string name;  // whole, with its "&" and ";"
    std::string value;
};

// Ordered pairs; a name occurs at most once.
struct EntityTable {
    std::vector<EntityPair> pairs;
};

// Adds the pair or replaces the value of the pair with that name. A missing or
// empty name or value does nothing.
void Entity_Define(EntityTable* table, const char* name, const char* value);
// The value of the pair named exactly `name`, or null.
const char* Entity_Lookup(const EntityTable* table, std::string_view name);

// Decodes &quot; &amp; &apos; &gt; &lt; and "&#x" hex ";" (one byte each) in
// place. A numeric reference with a character that is not a hex digit gives a
// byte of 0, which ends the text.
void Entity_DecodeCharacters(std::string* text);
