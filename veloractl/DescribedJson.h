// JSON that people write: each member is looked for by name, is of the type and in the range that
// is asked for, and no other is there.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "veloractl/Report.h"

namespace veloractl {

// The whole file, at most 16 MiB; Failure with kBadFile where it can't be read.
std::string ReadTextFile(const std::string& utf8Path);
std::vector<uint8_t> ReadBinaryFile(const std::string& utf8Path);
// Failure with kUnavailable where it can't be written.
void WriteFile(const std::string& utf8Path, const std::string& content);

// All of its members throw Failure with kBadFile, in the words "FILE: panel.gamma is no number".
class DescribedJson {
 public:
  // The file holds one object.
  static DescribedJson FromFile(const std::string& utf8Path);
  // An object; where: how a failure names it.
  DescribedJson(Json value, std::string where);

  bool Has(const std::string& name) const;
  double Number(const std::string& name, double fallback, double least, double most);
  int Integer(const std::string& name, int fallback, int least, int most);
  bool Flag(const std::string& name, bool fallback);
  std::string Text(const std::string& name, const std::string& fallback);
  std::vector<double> Numbers(const std::string& name, std::vector<double> fallback);
  std::vector<std::string> Texts(const std::string& name, std::vector<std::string> fallback);
  DescribedJson Object(const std::string& name);  // an empty one where it is missing
  std::vector<DescribedJson> Objects(const std::string& name);
  std::vector<std::string> Names() const;  // of all members

  // The last word: a member that nobody has asked for is a misspelt one.
  void RefuseOthers() const;

  [[noreturn]] void Refuse(const std::string& name, const std::string& why) const;

 private:
  const Json* Find(const std::string& name);
  std::string NameOf(const std::string& name) const { return where_ + name; }

  Json value_;
  std::string where_;  // "FILE: panel."
  std::set<std::string> asked_;
};

}  // namespace veloractl
