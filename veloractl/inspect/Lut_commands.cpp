// lut convert.
#include <algorithm>
#include <cctype>

#include "veloractl/inspect/CubeText.h"
#include "veloractl/inspect/Inspect_commands.h"
#include "veloractl/inspect/Machine.h"

namespace veloractl {
namespace {

struct ConvertArguments {
  std::string from;
  std::string to;
  std::string like;
};

bool IsCube(const std::string& path) {
  std::string ending = path.substr(path.size() - std::min<size_t>(path.size(), 5));
  std::ranges::transform(ending, ending.begin(), [](char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  });
  return ending == ".cube";
}

// A damaged LUT is not passed on as a good one.
DecodedBlock ReadGoodLut(Session& session, const std::string& path, std::vector<uint8_t>& file) {
  file = ReadFileBytes(session, path);
  const FileKind kind = RecogniseKind(file);
  const auto lut = kind == FileKind::LutBinFile || kind == FileKind::UserLutFile ? DecodeBlock(file)
                                                                                 : std::nullopt;
  if (!lut) {
    throw Failure(kBadFile, path + " holds no whole LUT (" + NameOf(kind) + ")");
  }
  Findings findings;
  CheckBlock(file, kind, findings);
  if (findings.Worst() == Verdict::Damaged) {
    throw Failure(kBadFile,
                  path + " is damaged, \"veloractl inspect\" tells how: nothing converted");
  }
  return *lut;
}

Report ToCube(const ConvertArguments& arguments, Session& session) {
  std::vector<uint8_t> file;
  const DecodedBlock lut = ReadGoodLut(session, arguments.from, file);
  const std::string text = CubeOf(lut, arguments.from);
  WriteFileBytes(arguments.to, text);
  return Json{{"from", arguments.from},
              {"to", arguments.to},
              {"LUT", lut.isGamma ? "gamma, 1024 entries" : "3D, 17 x 17 x 17 entries"},
              {"exact", ParseCube(text).lut.values == lut.values}};
}

Report FromCube(const ConvertArguments& arguments, Session& session) {
  const std::vector<uint8_t> text = ReadFileBytes(session, arguments.from);
  CubeLut cube;
  try {
    cube = ParseCube({reinterpret_cast<const char*>(text.data()), text.size()});
  } catch (const Failure& failure) {
    throw Failure(failure.Status(), arguments.from + ", " + failure.what());
  }
  std::vector<uint8_t> header;
  if (!arguments.like.empty()) {
    if (ReadGoodLut(session, arguments.like, header).isGamma != cube.lut.isGamma) {
      throw Failure(kBadArguments, arguments.like + " is another kind of LUT than " +
                                       arguments.from + ": its header does not fit");
    }
  }
  const std::vector<uint8_t> file = MakeLutFile(cube.lut, header);
  WriteFileBytes(arguments.to, {file.begin(), file.end()});
  return Json{{"from", arguments.from},
              {"to", arguments.to},
              {"LUT", cube.lut.isGamma ? "gamma, 1024 entries" : "3D, 17 x 17 x 17 entries"},
              {"exact", cube.rounded == 0},
              {"rounded values", cube.rounded},
              {"most rounded", Rounded(cube.mostRounded, 3)}};
}

Action DescribeConvert(CLI::App& app) {
  const auto arguments = std::make_shared<ConvertArguments>();
  app.add_option("FROM", arguments->from, "A LUT bin file, user LUT file or .cube text")
      ->required();
  app.add_option("TO", arguments->to, "What to write: .cube text if the name ends so, else a file")
      ->required();
  app.add_option(
         "--like", arguments->like,
         "Of a .cube: write a bin file with this one's header, type and panel with it; else "
         "a user LUT file")
      ->type_name("FILE");
  app.footer(
      "3D LUTs have 17 points on each axis, gamma LUTs 1024 levels; other sizes are refused, and "
      "nothing is calculated between points. Values of 10 bits (gamma: 12) come through "
      "exactly.\n\n"
      "  veloractl lut convert P3.bin p3.cube\n"
      "  veloractl lut convert p3.cube new-P3.bin --like P3.bin");
  return [arguments](Session& session) -> Report {
    if (IsCube(arguments->from) == IsCube(arguments->to)) {
      throw Failure(kBadArguments, "one of the two is to be a .cube, the other a LUT file");
    }
    return IsCube(arguments->to) ? ToCube(*arguments, session) : FromCube(*arguments, session);
  };
}

}  // namespace

void AddLutCommands(const CommandSet& commands) {
  commands.Group("lut", "LUT files")
      .Add("convert", "Between LUT files and .cube text", DescribeConvert);
}

}  // namespace veloractl
