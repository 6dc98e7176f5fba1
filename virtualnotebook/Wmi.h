#pragma once

#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace virtualnotebook {

// What WMI was told to say.
class WmiAnswers {
 public:
  using Rows = std::vector<std::wstring>;

  void Answer(const std::wstring& nameSpace, const std::wstring& query,
              const std::wstring& property, Rows values) {
    failures_.erase({nameSpace, query});
    rows_[{nameSpace, query, property}] = std::move(values);
  }

  void Fail(const std::wstring& nameSpace, const std::wstring& query, int status) {
    failures_[{nameSpace, query}] = status;
  }

  // 0 and the rows, or the status of a query that fails.
  int Run(const std::wstring& nameSpace, const std::wstring& query, const std::wstring& property,
          Rows& rows) const {
    if (const auto failure = failures_.find({nameSpace, query}); failure != failures_.end()) {
      return failure->second;
    }
    const auto found = rows_.find({nameSpace, query, property});
    rows = found == rows_.end() ? Rows() : found->second;
    return 0;
  }

 private:
  using Query = std::pair<std::wstring, std::wstring>;
  using Property = std::tuple<std::wstring, std::wstring, std::wstring>;

  std::map<Query, int> failures_;
  std::map<Property, Rows> rows_;
};

}  // namespace virtualnotebook
