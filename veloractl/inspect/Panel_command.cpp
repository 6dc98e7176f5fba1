// panel: which panel the library sees, why, and what it makes of it.
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "frame/Constants.h"
#include "veloractl/inspect/Diagrams.h"
#include "veloractl/inspect/Edid.h"
#include "veloractl/inspect/Inspect.h"
#include "veloractl/inspect/Inspect_commands.h"
#include "veloractl/inspect/LutBlocks.h"
#include "veloractl/inspect/Machine.h"

namespace veloractl {
namespace {

bool HasLogged(const Heard& heard, std::wstring_view start) {
  return std::ranges::any_of(heard.log,
                             [&](const Heard::Line& line) { return line.text.starts_with(start); });
}

// The library tells its own way in its log.
std::string RuleOf(const Heard& heard) {
  if (heard.queries.empty()) {
    return "none: the library had read the panel before this command";
  }
  if (HasLogged(heard, L"QueryCimv2NameSpaceProperty failed")) {
    return "no monitor has a device id: the first one's caption stands in, which names no key";
  }
  if (!HasLogged(heard, L"Multiple monitors are connected!")) {
    return "one monitor is connected: the first row of all monitors with a device id";
  }
  if (HasLogged(heard, L"Norvex monitor QueryCimv2NameSpaceProperty failed")) {
    return "several monitors are connected and none is the maker's: the first row of all monitors "
           "with a device id";
  }
  return "several monitors are connected: the first row of the maker's";
}

// A row was chosen when the key's path was made of it.
bool IsChosen(const Heard& heard, const std::wstring& row) {
  return !row.empty() && heard.keyPath.find(ToCodePage(ToUtf8(row))) != std::string::npos;
}

Json WmiRows(const Heard& heard) {
  Json rows = Json::array();
  for (const Heard::Query& query : heard.queries) {
    const Json head = {{"query", ToUtf8(query.query)}, {"property", ToUtf8(query.property)}};
    for (size_t i = 0; i < query.rows.size(); ++i) {
      Json row = head;
      row["row"] = i + 1;
      row["value"] = ToUtf8(query.rows[i]);
      row["chosen"] = i == 0 && IsChosen(heard, query.rows[i]);
      rows.push_back(row);
    }
    if (query.rows.empty()) {
      Json row = head;
      row["row"] = nullptr;
      row["value"] = query.status == 0 ? "no row" : "status " + std::to_string(query.status);
      row["chosen"] = false;
      rows.push_back(row);
    }
  }
  return rows;
}

Json DisplayRows(const Heard& heard) {
  Json rows = Json::array();
  for (const Heard::Display& display : heard.displays) {
    rows.push_back({{"display", ToUtf8(display.name)},
                    {"of", ToUtf8(display.adapter)},
                    {"text", ToUtf8(display.text)},
                    {"id", ToUtf8(display.id)}});
  }
  return rows;
}

std::string KeyState(const Heard& heard) {
  if (!heard.keyStatus) {
    return "none was opened";
  }
  if (*heard.keyStatus != ERROR_SUCCESS) {
    return "does not open: error " + std::to_string(*heard.keyStatus);
  }
  if (heard.edidStatus != ERROR_SUCCESS) {
    return "has no EDID: error " + std::to_string(heard.edidStatus.value_or(0));
  }
  return "has an EDID of " + ByteCount(heard.edid.size());
}

// The header of a block beside the panel, and each block's verdict.
void CompareFirmware(Session& session, const std::optional<velora::LcdEdidParse>& panel,
                     Findings& findings, Json& report) {
  const std::vector<uint8_t> table = ReadFirmwareTable(session);
  if (table.empty()) {
    findings.Warn("firmware table", "there is none",
                  "All modes take the golden file's LUTs, which are the model's and not this "
                  "panel's: ask for a firmware update.");
    return;
  }
  Json blocks = Json::array();
  const Container container = BlocksOf(table, true);
  bool isFirst = true;
  for (const ContainerBlock& block : container.blocks) {
    velora::BiosHeaderV2 header;
    if (block.bytes.size() < velora::kBlockHeaderSize ||
        !header.Parse(block.bytes.data(), block.bytes.size())) {
      continue;
    }
    const LutUse* const use = FindLutUse(header.GetLutType());
    Json row = {{"block", blocks.size() + 1}, {"LUT", use == nullptr ? "-" : use->name}};
    if (panel) {
      const PanelComparison compared = ComparePanel(header, *panel);
      row["first difference"] = compared.firstDifference.empty() ? "-" : compared.firstDifference;
      if (std::exchange(isFirst, false)) {
        Surroundings surroundings;
        surroundings.panel = panel;
        CheckPanel(header, surroundings, findings, report);
        report.erase("panel source");
      }
    }
    blocks.push_back(row);
  }
  report["firmware blocks"] = blocks;
  if (blocks.empty()) {
    findings.Fail("firmware table", "no block is in it",
                  "Look closer: dump-firmware, then inspect.");
  }
}

// The library's caches, which can be another panel's too.
Json DataFiles(Session& session, const std::optional<velora::LcdEdidParse>& panel) {
  Json rows = Json::array();
  for (const char* const name : BinFileNames()) {
    const std::string path = session.Path(std::string(velora::kDataDir) + name);
    Json row = {{"file", name}};
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
      row["state"] = "not there: made when a mode needs it";
    } else {
      Surroundings surroundings;
      surroundings.fileName = name;
      surroundings.panel = panel;
      row["state"] = NameOf(Inspect(ReadFileBytes(ToUtf8(path)), surroundings).findings.Worst());
    }
    rows.push_back(row);
  }
  return rows;
}

Json Troubles(const Heard& heard) {
  constexpr int kWarning = 2;
  Json lines = Json::array();
  for (const Heard::Line& line : heard.log) {
    if (line.level >= kWarning) {
      lines.push_back({{"level", line.level}, {"line", ToUtf8(line.text)}});
    }
  }
  return lines;
}

Report Panel(const std::string& png, const std::string& svg, Session& session) {
  const Heard& heard = HearPanel(session);
  const OwnLog ownLog;
  const auto panel = ParseEdid(heard.edid);
  Findings findings;
  Json report = {{"vendor", panel ? Json(AsciiOf(panel->GetVendor())) : Json()},
                 {"rule", RuleOf(heard)},
                 {"registry path", ToUtf8(heard.keyPath)},
                 {"registry key", KeyState(heard)},
                 {"verdict", nullptr},
                 {"advice", nullptr},
                 {"displays", DisplayRows(heard)},
                 {"WMI", WmiRows(heard)},
                 {"EDID", EdidFields(heard.edid)}};
  if (heard.edid.empty()) {
    findings.Fail("EDID", "the registry key " + KeyState(heard),
                  "The library cannot tell the panel, and takes the golden file's data for every "
                  "mode. The lines of its log say where it stopped; WMI and the monitor's driver "
                  "are what it depends on.");
  } else {
    CheckEdid(heard.edid, findings);
  }
  CompareFirmware(session, panel, findings, report);
  report["data files"] = DataFiles(session, panel);
  if (panel) {
    report["colours"] = PanelColours(*panel);
  }
  report["verdict"] = NameOf(findings.Worst());
  if (!findings.Advice().empty()) {
    report["advice"] = findings.Advice();
  }
  report["checks"] = findings.Rows();
  report["library log"] = Troubles(heard);
  if (panel && !(png.empty() && svg.empty())) {
    const pictures::Picture picture = DrawFile(heard.edid, FileKind::Edid, {});
    if (!svg.empty()) {
      WriteFileBytes(svg, picture.Svg());
    }
    if (!png.empty()) {
      WriteFileBytes(png, pictures::EncodePng(picture.Render()));
    }
  }
  if (!panel) {
    return {report, kRefused, "the library can't tell the panel: " + RuleOf(heard)};
  }
  if (findings.Worst() >= Verdict::OtherPanel) {
    return {report, kRefused, "the panel: " + findings.Advice()};
  }
  return report;
}

}  // namespace

void AddPanelCommand(const CommandSet& commands) {
  commands.Add("panel", "Which panel the library sees, why, and what it makes of it",
               [](CLI::App& app) -> Action {
                 const auto png = std::make_shared<std::string>();
                 const auto svg = std::make_shared<std::string>();
                 app.add_option("--png", *png,
                                "Draw the panel's gamut beside sRGB, P3 and Adobe RGB")
                     ->type_name("FILE");
                 app.add_option("--svg", *svg, "The same as SVG")->type_name("FILE");
                 app.footer(
                     "It reads only. The status is 1 where the panel can't be told and where the "
                     "firmware's data are another panel's.\n\n"
                     "  veloractl panel\n"
                     "  veloractl --virtual panel --png gamut.png");
                 return [png, svg](Session& session) { return Panel(*png, *svg, session); };
               });
}

}  // namespace veloractl
