#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace lumiquilt {

/// The number that a text starts with: leading blanks, an optional sign, digits,
/// an optional "." and digits. 0 when the text starts with none of these.
double leadingNumber(std::string_view text);

/// True when the whole text, blanks trimmed, is a number (exponent allowed).
bool isNumber(std::string_view text);

/// The value of a text that is a number by isNumber; raises error 13 (Type
/// mismatch) for any other text.
double numberOf(std::string_view text);

/// To a 32-bit float, nearest; beyond the float's range raises error 6.
float toSingle(double value);

/// Nearest whole number, halves to the even neighbour (2.5 -> 2, 3.5 -> 4).
double roundHalfEven(double value);

/// Rounds half to even into 16 bits; outside -32768..32767 raises error 6.
int16_t toInt16(double value);

/// Rounds half to even into 32 bits; outside the range raises error 6.
int32_t toInt32(double value);

/// Sum or difference that must stay within 16 bits, as the program's counters do.
int16_t checkedInt16(long long value);

/// Number as a message shows it: a leading blank unless a minus sign stands there.
std::string numberToText(long long value);
std::string numberToText(double value);

}  // namespace lumiquilt
