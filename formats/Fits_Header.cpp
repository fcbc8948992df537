// Card cleaning and keyword handling of the FITS header. Values are read the
// way C reads them: integers as atoi does (sign included, digits up to the first
// other character, 0 without any), reals by strtod.
#include "formats/Fits_Header.h"

#include <cstdlib>
#include <cstring>

namespace {

// Keywords in the order they are compared.
constexpr const char* kKeySimple = "SIMPLE";
constexpr const char* kKeyExtend = "EXTEND";
constexpr const char* kKeyNextend = "NEXTEND";
constexpr const char* kKeyBitpix = "BITPIX";
constexpr const char* kKeyDataMin = "DATAMIN";
constexpr const char* kKeyDataMax = "DATAMAX";
constexpr const char* kKeyBzero = "BZERO";
constexpr const char* kKeyBscale = "BSCALE";
constexpr const char* kKeyNaxis = "NAXIS";
constexpr const char* kKeyNaxis1 = "NAXIS1";
constexpr const char* kKeyNaxis2 = "NAXIS2";
constexpr const char* kKeyNaxis3 = "NAXIS3";
constexpr const char* kKeyCreator = "CREATOR";
constexpr const char* kKeyOrigin = "ORIGIN";
constexpr const char* kKeyComment = "COMMENT";
constexpr const char* kKeySoftware = "SOFTWARE";
constexpr const char* kKeyEnd = "END";

// Writers recognised by a fixed slice of the value (position 0 is the quote).
constexpr const char* kCreatorNebulosity = "Nebulosity";
constexpr const char* kOriginIraf = "NOAO-IRAF";
constexpr const char* kCommentFitswork = "Fitswork";
constexpr const char* kSoftwareDeepSky = "DeepSkySt";

// atoi as the C library implements it: strtol truncated to int.
int32_t IntValue(const char* value) {
    return static_cast<int32_t>(std::strtol(value, nullptr, 10));
}

double RealValue(const char* value) {
    return std::strtod(value, nullptr);
}

bool SliceIs(const char* value, int from, const char* text) {
    if (std::strlen(value) < static_cast<size_t>(from)) return false;
    return std::strncmp(value + from, text, std::strlen(text)) == 0;
}

void CopyWithoutSpaces(const uint8_t* from, int count, char* to) {
    int n = 0;
    for (int i = 0; i < count; ++i)
        if (from[i] != ' ') to[n++] = static_cast<char>(from[i]);
    std::memset(to + n, 0, kFitsCardTextSize - n);
}

}  // namespace

void Fits_CleanCard(const uint8_t card[80], char* keyword, char* value) {
    int split = 80;
    for (int i = 0; i < 80; ++i)
        if (card[i] == '=') {
            split = i;
            break;
        }
    CopyWithoutSpaces(card, split, keyword);
    int end = split < 80 ? split + 1 : 80;
    const int valueStart = end;
    while (end < 80 && card[end] != '/') ++end;
    CopyWithoutSpaces(card + valueStart, end - valueStart, value);
}

int Fits_HandleCard(FitsHeader* state, const char* keyword, const char* value) {
    if (std::strcmp(keyword, kKeySimple) == 0) {
        state->simple = std::strcmp(value, "T") == 0;
    } else if (std::strcmp(keyword, kKeyExtend) == 0) {
        state->extend = std::strcmp(value, "T") == 0;
    } else if (std::strcmp(keyword, kKeyNextend) == 0) {
        state->nextend = IntValue(value);
    } else if (std::strcmp(keyword, kKeyBitpix) == 0) {
        state->bitpix = IntValue(value);
    } else if (std::strcmp(keyword, kKeyDataMin) == 0) {
        state->dataMin = RealValue(value);
    } else if (std::strcmp(keyword, kKeyDataMax) == 0) {
        state->dataMax = RealValue(value);
    } else if (std::strcmp(keyword, kKeyBzero) == 0) {
        state->bzero = RealValue(value);
        state->hasBzero = 1;
    } else if (std::strcmp(keyword, kKeyBscale) == 0) {
        state->bscale = RealValue(value);
        state->hasBscale = 1;
    } else if (std::strcmp(keyword, kKeyNaxis) == 0) {
        state->naxis = IntValue(value);
    } else if (std::strcmp(keyword, kKeyNaxis1) == 0) {
        if (state->naxis > 1) state->naxis1 = IntValue(value);
    } else if (std::strcmp(keyword, kKeyNaxis2) == 0) {
        if (state->naxis > 1) state->naxis2 = IntValue(value);
    } else if (std::strcmp(keyword, kKeyNaxis3) == 0) {
        if (state->naxis == 3) state->naxis3 = IntValue(value);
    } else if (std::strcmp(keyword, kKeyCreator) == 0) {
        if (SliceIs(value, 1, kCreatorNebulosity)) state->knownCreator = 1;
    } else if (std::strcmp(keyword, kKeyOrigin) == 0) {
        if (SliceIs(value, 1, kOriginIraf)) state->knownCreator = 1;
    } else if (std::strcmp(keyword, kKeyComment) == 0) {
        if (SliceIs(value, 16, kCommentFitswork)) state->knownCreator = 1;
    } else if (std::strcmp(keyword, kKeySoftware) == 0) {
        if (SliceIs(value, 1, kSoftwareDeepSky)) state->knownCreator = 1;
    } else if (std::strcmp(keyword, kKeyEnd) == 0) {
        return 1;
    }
    return 0;
}
