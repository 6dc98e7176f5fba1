#pragma once

#include <string>
#include <string_view>

// Conversions of texts. What a code page cannot express comes out as its replacement character; a
// text of more than 2^31 - 1 units gives an empty one. Embedded zeros stay.
namespace closed {

std::wstring FromCodePage(std::string_view text);  // the system code page
std::string ToCodePage(std::wstring_view text);
std::string ToUtf8(std::wstring_view text);

}  // namespace closed
