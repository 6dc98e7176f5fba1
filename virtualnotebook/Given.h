// What the notebook gave to the module and has not had back.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

struct ISensorEvents;

namespace virtualnotebook {

// A handle or a block of memory. The members that its giver does not know stay empty.
struct GivenHandle {
  std::string giver;                      // the function
  std::wstring service = {};              // OpenServiceW: its name
  std::vector<std::wstring> images = {};  // CreateToolhelp32Snapshot: the processes
  size_t next = 0;                        // and the one that is due
  std::vector<uint8_t> block = {};        // memory: the address of its first byte is the handle
};

class GivenHandles {
 public:
  void* Give(GivenHandle handle) {
    auto given = std::make_unique<GivenHandle>(std::move(handle));
    void* const address = given->block.empty() ? static_cast<void*>(given.get())
                                               : static_cast<void*>(given->block.data());
    handles_[address] = std::move(given);
    return address;
  }

  // Memory that another owns.
  void Note(const void* address, const std::string& giver) {
    handles_[address] = std::make_unique<GivenHandle>(GivenHandle{.giver = giver});
  }

  // Null for what this giver did not give, and for what came back.
  GivenHandle* Find(const void* address, const std::string& giver) {
    const auto found = handles_.find(address);
    return found != handles_.end() && found->second->giver == giver ? found->second.get() : nullptr;
  }

  // False for what was not given by one of these.
  bool TakeBack(const void* address, const std::vector<std::string>& givers) {
    const auto isGiver = [&](const std::string& giver) { return Find(address, giver) != nullptr; };
    return std::ranges::any_of(givers, isGiver) && handles_.erase(address) == 1;
  }

  size_t Count(const std::string& giver) const {
    return static_cast<size_t>(std::ranges::count_if(
        handles_, [&](const auto& handle) { return handle.second->giver == giver; }));
  }

 private:
  std::map<const void*, std::unique_ptr<GivenHandle>> handles_;
};

// What the sensor objects share with the notebook: the module may hold one for longer than the
// notebook lives.
struct SensorBoard {
  std::map<std::string, size_t> references;  // by the function that gave the object
  std::map<size_t, ISensorEvents*> sinks;    // by the sensor's number
};

}  // namespace virtualnotebook
