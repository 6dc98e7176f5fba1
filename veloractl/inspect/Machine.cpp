#include "veloractl/inspect/Machine.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "veloractl/inspect/Edid.h"

namespace veloractl {
namespace {

constexpr DWORD kAcpiProvider = 0x41435049;  // "ACPI"
constexpr DWORD kLutTableId = 0x54554C44;    // in memory "DLUT"

}  // namespace

std::vector<uint8_t> ReadFileBytes(const std::string& path) {
  std::ifstream file(std::filesystem::path(FromUtf8(path)), std::ios::binary);
  std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
  if (!file.is_open() || file.bad()) {
    throw Failure(kBadFile, path + " can't be read");
  }
  return bytes;
}

std::vector<uint8_t> ReadFileBytes(Session& session, const std::string& path) {
  return ReadFileBytes(session.Virtual() == nullptr ? path
                                                    : ToUtf8(session.Path(ToCodePage(path))));
}

void WriteFileBytes(const std::string& path, const std::string& content) {
  std::ofstream file(std::filesystem::path(FromUtf8(path)), std::ios::binary);
  file << content;
  if (!file.flush()) {
    throw Failure(kUnavailable, path + " can't be written");
  }
}

std::vector<uint8_t> ReadEdidFile(Session& session, const std::string& path) {
  const std::vector<uint8_t> file = ReadFileBytes(session, path);
  std::vector<uint8_t> edid = BytesOfHexText(file).value_or(file);
  if (!ParseEdid(edid)) {
    throw Failure(kBadFile, path +
                                " is no EDID that the library reads; \"veloractl inspect --as "
                                "edid\" tells more");
  }
  return edid;
}

std::vector<uint8_t> ReadFirmwareTable(Session& session) {
  session.Virtual();
  std::vector<uint8_t> table(GetSystemFirmwareTable(kAcpiProvider, kLutTableId, nullptr, 0));
  const UINT size = table.empty() ? 0
                                  : GetSystemFirmwareTable(kAcpiProvider, kLutTableId, table.data(),
                                                           static_cast<DWORD>(table.size()));
  table.resize(size <= table.size() ? size : 0);
  return table;
}

const Heard& HearPanel(Session& session) {
  static std::optional<Heard> heard;
  if (!heard) {
    const virtualnotebook::LoadedLibrary& library = session.Library();
    Listener listener(library.Handle());
    char vendor[8] = "";
    library.GetVendor(vendor, sizeof vendor);
    heard = std::move(listener.heard);
  }
  return *heard;
}

}  // namespace veloractl
