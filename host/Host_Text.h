// Small text helpers the platform code and the toolkit both need.
#pragma once

// The value of a hexadecimal digit of either case; -1 for any other character.
inline int Host_HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}
