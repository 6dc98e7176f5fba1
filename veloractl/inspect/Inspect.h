// Looks into the files that the library lives on. Nothing here reads or writes anything: bytes come
// in, and a report goes out, for any bytes whatever.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "panel/LcdEdidParse.h"
#include "veloractl/inspect/Findings.h"

namespace veloractl {

enum class FileKind {
  Unknown,
  FirmwareTable,
  GoldenFile,
  LutBinFile,
  UserLutFile,
  Edid,
  DigestFile,
  UserProfile,
  PlainProfile,  // an ICC profile that carries no hash of its own: a preset's
};

// The kinds by the names of --as; Unknown has none.
struct KindName {
  FileKind kind;
  const char* option;  // "lut-bin"
  const char* name;    // "LUT bin file"
};
std::span<const KindName> KindNames();
const char* NameOf(FileKind kind);

// By the content alone, damaged files as far as they can still be told.
FileKind RecogniseKind(ByteSpan file);

// What an inspection compares the file with, where it is known.
struct Surroundings {
  std::string fileName;                       // without its folder
  std::optional<velora::LcdEdidParse> panel;  // this machine's, or another's
  std::string panelSource;                    // where its EDID comes from
  std::optional<std::string> modeName;        // of a user profile's mode
  // The bytes of a preset profile by its name; empty function: none is known.
  std::function<std::optional<std::vector<uint8_t>>(const std::string&)> profile;
  std::vector<uint8_t> digest;  // a digest file, for a preset's profile
};

struct Inspection {
  FileKind kind = FileKind::Unknown;
  Findings findings;
  Json report;  // kind, verdict, advice, what it is, fields, checks and what belongs to the kind
};

// Unknown as kind: as recognised.
Inspection Inspect(ByteSpan file, const Surroundings& surroundings,
                   FileKind kind = FileKind::Unknown);

// --- The kinds; each fills report and findings ---

void InspectContainer(ByteSpan file, const Surroundings& surroundings, Inspection& out);
void InspectLutFile(ByteSpan file, const Surroundings& surroundings, Inspection& out);
void InspectEdid(ByteSpan file, Inspection& out);
void InspectDigest(ByteSpan file, const Surroundings& surroundings, Inspection& out);
void InspectProfile(ByteSpan file, const Surroundings& surroundings, Inspection& out);

}  // namespace veloractl
