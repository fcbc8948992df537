// Writing a resource archive from a list of named entries, in the layout the
// program reads: a 78-byte header (type and creator "VDSK"), one 8-byte slot
// per record, the index record "#" in slot 0 with 8192 bucket heads, and one
// record per entry chained to the others of its bucket.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct PackEntry {
    std::string name;
    std::vector<uint8_t> data;
};

// The archive bytes; false (with a reason) when the entries do not fit the
// layout (more than 65535 slots, a name used twice, an empty name).
bool Pack_Build(const std::vector<PackEntry>& entries, std::vector<uint8_t>* archive, std::string* error);
