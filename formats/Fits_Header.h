// The FITS header state and the handling of one cleaned card. The reader feeds
// every card of a header through Fits_HandleCard and then decides from the state
// whether an image follows.
#pragma once

#include <cstdint>

struct FitsHeader {
    int32_t naxis1 = 0;  // only taken while naxis > 1
    int32_t naxis2 = 0;
    int32_t bitpix = 0;
    int32_t nextend = 0;
    int32_t knownCreator = 0;  // a writer whose float data may exceed 128 unscaled
    double dataMin = 0.0;
    double dataMax = 0.0;
    double bzero = 0.0;
    double bscale = 0.0;  // stored, never applied: its presence only lifts the float cap
    int32_t simple = 0;
    int32_t extend = 0;
    int32_t hasBzero = 0;
    int32_t hasBscale = 0;
    int32_t naxis = 0;
    int32_t naxis3 = 0;  // only taken while naxis == 3
};

// Size of the buffers that hold a cleaned keyword or value: the 80 card
// characters, a terminator and slack so that fixed-offset comparisons into a
// short value stay inside the buffer.
inline constexpr int kFitsCardTextSize = 96;

// Splits an 80-byte card at its first "=" (column 80 without one) into keyword
// and value, with every space removed; the value ends at the first "/". Both
// outputs are NUL-terminated and kFitsCardTextSize bytes long.
void Fits_CleanCard(const uint8_t card[80], char* keyword, char* value);

// Fills the state from one card; 1 when the keyword is "END", else 0.
int Fits_HandleCard(FitsHeader* state, const char* keyword, const char* value);
