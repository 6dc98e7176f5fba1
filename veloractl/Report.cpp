#include "veloractl/Report.h"

#include <windows.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace veloractl {
namespace {

constexpr size_t kGap = 2;           // blanks between columns
constexpr size_t kLongestList = 8;   // values of an array that stay on one line
constexpr size_t kLongestText = 24;  // of one of them

std::string AsText(const Json& value) {
  switch (value.type()) {
    case Json::value_t::string:
      return value.get<std::string>();
    case Json::value_t::boolean:
      return value.get<bool>() ? "yes" : "no";
    case Json::value_t::null:
      return "-";
    case Json::value_t::number_float: {
      const std::string number = value.dump();
      return number.ends_with(".0") ? number.substr(0, number.size() - 2) : number;
    }
    default:
      return value.dump(-1, ' ', false, Json::error_handler_t::replace);
  }
}

bool IsPlain(const Json& value) {
  return value.is_primitive() ||
         (value.is_array() && value.size() <= kLongestList &&
          std::ranges::all_of(value, [](const Json& item) {
            return item.is_primitive() &&
                   (!item.is_string() || item.get_ref<const std::string&>().size() <= kLongestText);
          }));
}

std::string AsLine(const Json& value) {
  if (!value.is_array()) {
    return AsText(value);
  }
  std::string line;
  for (const Json& item : value) {
    line += (line.empty() ? "" : ", ") + AsText(item);
  }
  return line.empty() ? "-" : line;
}

// Letters, not bytes, of UTF-8.
size_t WidthOf(const std::string& text) {
  return static_cast<size_t>(std::ranges::count_if(
      text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string Padded(std::string text, size_t width) {
  const size_t now = WidthOf(text);
  return text.append(width > now ? width - now : 0, ' ');
}

bool IsTable(const Json& value) {
  return value.is_array() && !value.empty() && std::ranges::all_of(value, [](const Json& row) {
           return row.is_object() && std::ranges::all_of(row, IsPlain);
         });
}

std::string Rows(const Json& table, const std::string& indent) {
  std::vector<std::string> names;
  for (const Json& row : table) {
    for (const auto& [name, cell] : row.items()) {
      if (std::ranges::find(names, name) == names.end()) {
        names.push_back(name);
      }
    }
  }
  std::vector<std::vector<std::string>> lines = {names};
  for (const Json& row : table) {
    std::vector<std::string> cells;
    cells.reserve(names.size());
    for (const std::string& name : names) {
      cells.push_back(row.contains(name) ? AsLine(row.at(name)) : "");
    }
    lines.push_back(std::move(cells));
  }
  std::string text;
  for (const auto& cells : lines) {
    std::string line = indent;
    for (size_t i = 0; i < cells.size(); ++i) {
      size_t width = 0;
      for (const auto& other : lines) {
        width = std::max(width, WidthOf(other[i]));
      }
      line += Padded(cells[i], width + kGap);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  }
  return text;
}

std::string Section(const Json& value, const std::string& indent) {
  if (IsPlain(value)) {
    return indent + AsLine(value) + "\n";
  }
  if (IsTable(value)) {
    return Rows(value, indent);
  }
  std::string text;
  if (value.is_array()) {
    for (const Json& item : value) {
      text += Section(item, indent);
      text += item.is_structured() ? "\n" : "";
    }
    return text;
  }
  size_t width = 0;
  for (const auto& [name, member] : value.items()) {
    width = IsPlain(member) ? std::max(width, WidthOf(name)) : width;
  }
  for (const auto& [name, member] : value.items()) {
    if (IsPlain(member)) {
      text += indent + Padded(name, width + kGap) + AsLine(member) + "\n";
    } else {
      text += indent + name + ":\n" + Section(member, indent + "  ");
    }
  }
  return text;
}

std::wstring Widen(const std::string& text, UINT codePage) {
  const int size = static_cast<int>(text.size());
  std::wstring wide(
      static_cast<size_t>(MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0)), L'\0');
  MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

}  // namespace

std::string AsTable(const Json& value) { return Section(value, ""); }

std::string ToUtf8(const std::wstring& text) {
  const int size = static_cast<int>(text.size());
  std::string utf8(static_cast<size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr,
                                                           0, nullptr, nullptr)),
                   '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), size, utf8.data(), static_cast<int>(utf8.size()),
                      nullptr, nullptr);
  return utf8;
}

std::string ToUtf8(const std::string& text) { return ToUtf8(Widen(text, CP_ACP)); }

std::wstring FromUtf8(const std::string& text) { return Widen(text, CP_UTF8); }

std::string ToCodePage(const std::string& utf8) {
  const std::wstring wide = FromUtf8(utf8);
  const int size = static_cast<int>(wide.size());
  BOOL lost = FALSE;
  std::string text(
      static_cast<size_t>(WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), size,
                                              nullptr, 0, nullptr, nullptr)),
      '\0');
  WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), size, text.data(),
                      static_cast<int>(text.size()), nullptr, &lost);
  if (lost) {
    throw Failure(kBadArguments, "\"" + utf8 + "\" has a letter that the system's code page lacks");
  }
  return text;
}

}  // namespace veloractl
