#include "orbevent/orbevent.h"

#include <windows.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "common/LogFile.h"
#include "common/Text.h"

namespace {

std::string CodePageToUtf8(const std::string& text) {
  return closed::ToUtf8(closed::FromCodePage(text));
}

}  // namespace

OrbEvent::OrbEvent(int eventId) : eventId_(eventId) {}

OrbEvent::~OrbEvent() = default;

void OrbEvent::PutString(const std::string& key, const std::string& value) {
  if (key.empty() || key.size() > MAX_KEY_LEN || value.size() > MAX_VALUE_LEN) {
    return;
  }
  const auto present = std::find_if(pairs_.begin(), pairs_.end(),
                                    [&](const auto& pair) { return pair.first == key; });
  if (present != pairs_.end()) {
    present->second = value;
  } else if (pairs_.size() < MAX_PAIR_NUM) {
    pairs_.emplace_back(key, value);
  }
}

void OrbView::Report(OrbEvent& event) {
  nlohmann::ordered_json data = nlohmann::ordered_json::object();
  for (const auto& [key, value] : event.pairs_) {
    data[CodePageToUtf8(key)] = CodePageToUtf8(value);
  }
  const nlohmann::ordered_json line = {{"time", closed::UtcTimestamp()},
                                       {"process", GetCurrentProcessId()},
                                       {"event", event.eventId_},
                                       {"data", data}};
  static const closed::LogFile file(L"C:\\ProgramData\\Comms\\NxVelora\\Log\\orbevent.jsonl");
  file.Append(line.dump());
}
