// inspect, dump-firmware.
#include <windows.h>

#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "veloractl/inspect/Diagrams.h"
#include "veloractl/inspect/Edid.h"
#include "veloractl/inspect/Inspect.h"
#include "veloractl/inspect/Inspect_commands.h"
#include "veloractl/inspect/LutBlocks.h"
#include "veloractl/inspect/Machine.h"

namespace veloractl {
namespace {

struct InspectArguments {
  std::string file;
  std::string kind;
  std::string edid;
  std::string digest;
  std::string profiles;
  std::string modeName;
  std::string other;
  std::string svg;
  std::string png;
  size_t block = 0;
};

FileKind KindOf(const std::string& option) {
  for (const KindName& row : KindNames()) {
    if (option == row.option) {
      return row.kind;
    }
  }
  return FileKind::Unknown;
}

std::vector<std::string> KindOptions() {
  std::vector<std::string> options;
  for (const KindName& row : KindNames()) {
    options.emplace_back(row.option);
  }
  return options;
}

std::string NameOfFile(const std::string& path) {
  return ToUtf8(std::filesystem::path(FromUtf8(path)).filename().wstring());
}

// The panel that was given, else this machine's; none where there is no telling.
void FindPanel(Session& session, const std::string& edidFile, Surroundings& surroundings) {
  if (!edidFile.empty()) {
    surroundings.panel = ParseEdid(ReadEdidFile(session, edidFile));
    surroundings.panelSource = edidFile;
    return;
  }
  try {
    const Heard& heard = HearPanel(session);
    surroundings.panel = ParseEdid(heard.edid);
    surroundings.panelSource = "this machine: " + ToUtf8(heard.keyPath);
  } catch (const Failure&) {
    surroundings.panelSource.clear();  // a machine without the library: nothing to compare with
  }
}

void FindProfiles(Session& session, const std::string& folder, Surroundings& surroundings) {
  if (folder.empty()) {
    return;
  }
  surroundings.profile = [&session,
                          folder](const std::string& name) -> std::optional<std::vector<uint8_t>> {
    try {
      return ReadFileBytes(session, folder + "\\" + ToUtf8(name));
    } catch (const Failure&) {
      return std::nullopt;
    }
  };
}

// One block of a container as a file of its own.
struct Subject {
  std::vector<uint8_t> bytes;
  FileKind kind;
};

Subject SubjectOf(Session& session, const std::string& path, FileKind kind, size_t block) {
  Subject subject{ReadFileBytes(session, path), kind};
  if (kind == FileKind::Unknown) {
    subject.kind = RecogniseKind(subject.bytes);
  }
  const bool isContainer =
      subject.kind == FileKind::FirmwareTable || subject.kind == FileKind::GoldenFile;
  if (block == 0) {
    return subject;
  }
  if (!isContainer) {
    throw Failure(kBadArguments, "--block is for firmware tables and golden files");
  }
  const Container container = BlocksOf(subject.bytes, subject.kind == FileKind::FirmwareTable);
  if (block > container.blocks.size()) {
    throw Failure(kBadArguments, path + " has " + std::to_string(container.blocks.size()) +
                                     " blocks, there is no block " + std::to_string(block));
  }
  const ByteSpan bytes = container.blocks[block - 1].bytes;
  return {{bytes.begin(), bytes.end()}, FileKind::LutBinFile};
}

DecodedBlock LutOf(const Subject& subject, const std::string& path) {
  const bool isLut = subject.kind == FileKind::LutBinFile || subject.kind == FileKind::UserLutFile;
  const auto lut = isLut ? DecodeBlock(subject.bytes) : std::nullopt;
  if (!lut) {
    throw Failure(kBadFile, path + " holds no whole LUT to compare");
  }
  return *lut;
}

void Draw(const pictures::Picture& picture, const InspectArguments& arguments, Json& report) {
  if (!arguments.svg.empty()) {
    WriteFileBytes(arguments.svg, picture.Svg());
  }
  if (!arguments.png.empty()) {
    WriteFileBytes(arguments.png, pictures::EncodePng(picture.Render()));
  }
  report["picture"] = {{"width", picture.Width()}, {"height", picture.Height()}};
}

bool WantsPicture(const InspectArguments& arguments) {
  return !arguments.svg.empty() || !arguments.png.empty();
}

Report InspectDifference(const InspectArguments& arguments, Session& session) {
  const Subject first = SubjectOf(session, arguments.file, KindOf(arguments.kind), arguments.block);
  const Subject second = SubjectOf(session, arguments.other, FileKind::Unknown, arguments.block);
  const DecodedBlock a = LutOf(first, arguments.file);
  const DecodedBlock b = LutOf(second, arguments.other);
  Json report = {{"file", arguments.file}, {"other", arguments.other}};
  report.update(Compare(a, b).report);
  if (WantsPicture(arguments)) {
    Draw(DrawDifference(a, b, NameOfFile(arguments.other) + " less " + NameOfFile(arguments.file)),
         arguments, report);
  }
  return report;
}

Report InspectFile(const InspectArguments& arguments, Session& session) {
  const Subject subject =
      SubjectOf(session, arguments.file, KindOf(arguments.kind), arguments.block);
  Surroundings surroundings;
  surroundings.fileName = NameOfFile(arguments.file);
  FindPanel(session, arguments.edid, surroundings);
  FindProfiles(session, arguments.profiles, surroundings);
  if (!arguments.digest.empty()) {
    surroundings.digest = ReadFileBytes(session, arguments.digest);
  }
  if (!arguments.modeName.empty()) {
    surroundings.modeName = ToCodePage(arguments.modeName);
  }
  const OwnLog log;
  Inspection inspection = Inspect(subject.bytes, surroundings, subject.kind);
  Json report = {{"file", arguments.file}};
  report.update(inspection.report);
  Json lines = Json::array();
  for (const std::wstring& line : log.Errors()) {
    lines.push_back({{"line", ToUtf8(line)}});
  }
  report["the library would log"] = lines;
  if (WantsPicture(arguments)) {
    Draw(DrawFile(subject.bytes, inspection.kind, surroundings), arguments, report);
  }
  if (inspection.kind == FileKind::Unknown) {
    return {report, kBadFile, arguments.file + " is none of the library's files"};
  }
  const Verdict verdict = inspection.findings.Worst();
  if (verdict < Verdict::OtherPanel) {
    return report;
  }
  return {report, kRefused,
          arguments.file + " is " + NameOf(verdict) + ". " + inspection.findings.Advice()};
}

Action DescribeInspect(CLI::App& app) {
  const auto arguments = std::make_shared<InspectArguments>();
  app.add_option("FILE", arguments->file, "The file to look into")->required();
  app.add_option("--as", arguments->kind, "Its kind, where the content does not tell")
      ->check(CLI::IsMember(KindOptions()));
  app.add_option("--block", arguments->block,
                 "Of a firmware table or golden file this block alone, from 1");
  app.add_option("--edid", arguments->edid,
                 "The panel to compare with: an EDID, as bytes or hexadecimal text; else this "
                 "machine's panel")
      ->type_name("FILE");
  app.add_option("--digest", arguments->digest, "The digest file to look an ICC profile up in")
      ->type_name("FILE");
  app.add_option("--profiles", arguments->profiles,
                 "The folder of the profiles that a digest file speaks for")
      ->type_name("FOLDER");
  app.add_option("--mode-name", arguments->modeName,
                 "The name of the mode that a user profile is to belong to; else its own");
  app.add_option("--diff", arguments->other, "Compare with this LUT file instead")
      ->type_name("FILE");
  app.add_option("--svg", arguments->svg, "Draw what is in it: curves, gamuts, slices")
      ->type_name("FILE");
  app.add_option("--png", arguments->png, "The same as pixels")->type_name("FILE");
  app.footer(
      "The status is 0 for a good file, 1 for a damaged one or another panel's, 3 for a file that "
      "is none of the library's.\n\n"
      "  veloractl inspect P3.bin --png p3.png\n"
      "  veloractl inspect dlut.bin --edid panel.hex --block 2\n"
      "  veloractl inspect P3.bin --diff GoldenP3.bin --svg difference.svg\n"
      "  veloractl --json inspect Reading%1_usr.icc --mode-name Reading");
  return [arguments](Session& session) -> Report {
    return arguments->other.empty() ? InspectFile(*arguments, session)
                                    : InspectDifference(*arguments, session);
  };
}

Action DescribeDumpFirmware(CLI::App& app) {
  const auto file = std::make_shared<std::string>();
  app.add_option("FILE", *file, "Where the table goes")->required();
  app.footer(
      "The table can then be inspected anywhere:\n\n"
      "  veloractl dump-firmware dlut.bin\n"
      "  veloractl inspect dlut.bin --edid panel.hex");
  return [file](Session& session) -> Report {
    const std::vector<uint8_t> table = ReadFirmwareTable(session);
    if (table.empty()) {
      throw Failure(kRefused,
                    "the firmware has no table DLUT, so that all modes take the golden "
                    "file's LUTs");
    }
    WriteFileBytes(*file, {table.begin(), table.end()});
    return Json{
        {"file", *file}, {"size", table.size()}, {"blocks", BlocksOf(table, true).blocks.size()}};
  };
}

}  // namespace

void AddFileCommands(const CommandSet& commands) {
  commands.Add("inspect", "What a file of the library's is, and whether it is good",
               DescribeInspect);
  commands.Add("dump-firmware", "The firmware's LUT table into a file", DescribeDumpFirmware);
}

}  // namespace veloractl
