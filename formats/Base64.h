// Standard base64 ("A"-"Z", "a"-"z", "0"-"9", "+", "/", padded with "="), for
// images carried as text: the mask in the processing log, the pictures inside
// the exported HTML pages.
#pragma once

#include <cstdint>
#include <span>
#include <string>

std::string Base64_Encode(std::span<const uint8_t> bytes);
