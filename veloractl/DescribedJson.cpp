#include "veloractl/DescribedJson.h"

#include <cmath>
#include <fstream>
#include <iterator>

namespace veloractl {
namespace {

constexpr std::streamsize kLargestFile = 16 << 20;

std::string Plain(double number) {
  const std::string text = Json(number).dump();
  return text.ends_with(".0") ? text.substr(0, text.size() - 2) : text;
}

}  // namespace

std::string ReadTextFile(const std::string& utf8Path) {
  std::ifstream file(ToCodePage(utf8Path), std::ios::binary);
  std::string content;
  if (file) {
    content.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  if (!file || file.bad()) {
    throw Failure(kBadFile, "can't read " + utf8Path);
  }
  if (content.size() > static_cast<size_t>(kLargestFile)) {
    throw Failure(kBadFile, utf8Path + " is larger than 16 MiB");
  }
  return content;
}

std::vector<uint8_t> ReadBinaryFile(const std::string& utf8Path) {
  const std::string content = ReadTextFile(utf8Path);
  return {content.begin(), content.end()};
}

void WriteFile(const std::string& utf8Path, const std::string& content) {
  std::ofstream file(ToCodePage(utf8Path), std::ios::binary);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  if (!file.flush()) {
    throw Failure(kUnavailable, "can't write " + utf8Path);
  }
}

DescribedJson DescribedJson::FromFile(const std::string& utf8Path) {
  const std::string text = ReadTextFile(utf8Path);
  const Json value = Json::parse(text, nullptr, false, true);
  if (value.is_discarded()) {
    throw Failure(kBadFile, utf8Path + " is not JSON");
  }
  if (!value.is_object()) {
    throw Failure(kBadFile, utf8Path + " is not a JSON object");
  }
  return {value, utf8Path + ": "};
}

DescribedJson::DescribedJson(Json value, std::string where)
    : value_(std::move(value)), where_(std::move(where)) {}

bool DescribedJson::Has(const std::string& name) const { return value_.contains(name); }

const Json* DescribedJson::Find(const std::string& name) {
  asked_.insert(name);
  const auto found = value_.find(name);
  return found == value_.end() ? nullptr : &*found;
}

void DescribedJson::Refuse(const std::string& name, const std::string& why) const {
  throw Failure(kBadFile, NameOf(name) + " " + why);
}

double DescribedJson::Number(const std::string& name, double fallback, double least, double most) {
  const Json* const value = Find(name);
  if (value == nullptr) {
    return fallback;
  }
  if (!value->is_number()) {
    Refuse(name, "is no number");
  }
  const double number = value->get<double>();
  if (!(number >= least && number <= most)) {
    Refuse(name, "is not from " + Plain(least) + " to " + Plain(most));
  }
  return number;
}

int DescribedJson::Integer(const std::string& name, int fallback, int least, int most) {
  const double number = Number(name, fallback, least, most);
  if (number != std::trunc(number)) {
    Refuse(name, "is no whole number");
  }
  return static_cast<int>(number);
}

bool DescribedJson::Flag(const std::string& name, bool fallback) {
  const Json* const value = Find(name);
  if (value != nullptr && !value->is_boolean()) {
    Refuse(name, "is neither true nor false");
  }
  return value == nullptr ? fallback : value->get<bool>();
}

std::string DescribedJson::Text(const std::string& name, const std::string& fallback) {
  const Json* const value = Find(name);
  if (value != nullptr && !value->is_string()) {
    Refuse(name, "is no text");
  }
  return value == nullptr ? fallback : value->get<std::string>();
}

std::vector<double> DescribedJson::Numbers(const std::string& name, std::vector<double> fallback) {
  const Json* const value = Find(name);
  if (value == nullptr) {
    return fallback;
  }
  std::vector<double> numbers;
  for (const Json& item : value->is_array() ? *value : Json::array()) {
    if (item.is_number()) {
      numbers.push_back(item.get<double>());
    }
  }
  if (!value->is_array() || numbers.size() != value->size() ||
      (!fallback.empty() && numbers.size() != fallback.size())) {
    Refuse(name, fallback.empty()
                     ? "is no list of numbers"
                     : "is no list of " + std::to_string(fallback.size()) + " numbers");
  }
  return numbers;
}

std::vector<std::string> DescribedJson::Texts(const std::string& name,
                                              std::vector<std::string> fallback) {
  const Json* const value = Find(name);
  if (value == nullptr) {
    return fallback;
  }
  std::vector<std::string> texts;
  for (const Json& item : value->is_array() ? *value : Json::array()) {
    if (item.is_string()) {
      texts.push_back(item.get<std::string>());
    }
  }
  if (!value->is_array() || texts.size() != value->size()) {
    Refuse(name, "is no list of texts");
  }
  return texts;
}

DescribedJson DescribedJson::Object(const std::string& name) {
  const Json* const value = Find(name);
  if (value != nullptr && !value->is_object()) {
    Refuse(name, "is no object");
  }
  return {value == nullptr ? Json::object() : *value, NameOf(name) + "."};
}

std::vector<DescribedJson> DescribedJson::Objects(const std::string& name) {
  const Json* const value = Find(name);
  std::vector<DescribedJson> objects;
  if (value == nullptr) {
    return objects;
  }
  for (const Json& item : value->is_array() ? *value : Json::array()) {
    if (item.is_object()) {
      objects.emplace_back(item, NameOf(name) + "[" + std::to_string(objects.size()) + "].");
    }
  }
  if (!value->is_array() || objects.size() != value->size()) {
    Refuse(name, "is no list of objects");
  }
  return objects;
}

std::vector<std::string> DescribedJson::Names() const {
  std::vector<std::string> names;
  for (const auto& [name, member] : value_.items()) {
    names.push_back(name);
  }
  return names;
}

void DescribedJson::RefuseOthers() const {
  for (const auto& [name, member] : value_.items()) {
    if (asked_.count(name) == 0) {
      Refuse(name, "is not known");
    }
  }
}

}  // namespace veloractl
