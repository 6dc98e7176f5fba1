// Colour modes: preset ones, the user's own, and their fine tuning.
#include <algorithm>
#include <string_view>

#include "veloractl/Commands.h"
#include "veloractl/Features.h"
#include "veloractl/Modes.h"
#include "veloractl/Registry.h"
#include "veloractl/Shown.h"

namespace veloractl {
namespace {

using virtualnotebook::LoadedLibrary;

constexpr const char* kSetTypes[] = {"DDC/CI", "3D LUT", "matrix", "gamma LUT and 3D LUT"};

template <size_t size>
std::string Field(const char (&field)[size]) {
  return FieldOf(field, size);
}

// --- modes, set-mode, sync, reset ---

Report Modes(Session& session) {
  const MachineModes modes = LoadModes(session);
  session.LibraryWithModes();
  Json rows = Json::array();
  for (const ColorFieldModeInfo& preset : modes.presets) {
    rows.push_back({{"mode", NameOfMode(preset.mode)},
                    {"number", preset.mode},
                    {"gamut", preset.gamut},
                    {"gamma", preset.gamma},
                    {"gains", {preset.temperR, preset.temperG, preset.temperB}},
                    {"profile", Field(preset.iccPath)}});
  }
  return Json{{"source", modes.source},
              {"setType", modes.init.setType},
              {"way", kSetTypes[modes.init.setType]},
              {"defaultMode", NameOfMode(modes.init.defaultMode)},
              {"current", NameOfMode(session.Library().GetColorFieldCurrentMode(-1))},
              {"digestFile", Field(modes.init.pIccCheckFilePath)},
              {"goldenFile", Field(modes.init.goldenFilePath)},
              {"modes", rows}};
}

// Stored after a switch that has succeeded, as a host does.
void StoreMode(const LoadedLibrary& library, ColorFieldMode mode) {
  Expect(library.SetColorFieldCurrentMode(mode), "the mode is on, but SetColorFieldCurrentMode");
}

struct ModeArguments {
  std::string mode;
  bool keep = false;
};

Report SetMode(const ModeArguments& arguments, Session& session) {
  const ColorFieldMode mode = ModeOf(arguments.mode);
  if (mode == USRDESIGN_MODE) {
    throw Failure(kBadArguments, "a user mode is set by its id: \"veloractl user set ID\"");
  }
  const LoadedLibrary& library = session.LibraryWithModes();
  Expect(library.SetColorField(mode), "SetColorField");
  if (!arguments.keep) {
    StoreMode(library, mode);
  }
  return WithShown(session,
                   {{"mode", NameOfMode(mode)}, {"number", mode}, {"stored", !arguments.keep}});
}

Report Sync(bool modeDecides, Session& session) {
  const LoadedLibrary& library = session.LibraryWithModes();
  if (modeDecides) {
    if (!library.SyncCurrentModeIccFile()) {
      throw Failure(kRefused, "SyncCurrentModeIccFile: the stored mode's profile could not be set");
    }
    return WithShown(session, {{"decided", "the stored mode"},
                               {"mode", NameOfMode(library.GetColorFieldCurrentMode(-1))}});
  }
  const int mode = library.SyncSysColorField();
  if (mode == -1) {
    throw Failure(kRefused,
                  "SyncSysColorField gave -1: no mode belongs to the profile, or it could not be "
                  "applied");
  }
  StoreMode(library, mode);
  return WithShown(session, {{"decided", "the system's profile"}, {"mode", NameOfMode(mode)}});
}

Report Reset(Session& session) {
  const LoadedLibrary& library = session.LibraryWithModes();
  Expect(library.ResetColorField(), "ResetColorField");
  return WithShown(session, {{"mode", NameOfMode(library.GetColorFieldResetMode(-1))}});
}

// --- user ---

struct UserArguments {
  std::string id;
  std::string newId;
  std::string name;
  std::string description;
  std::string gamut = "srgb";
  std::vector<double> white = {0.3127, 0.3290};
  double gamma = 2.2;
  double serial = 0;
};

constexpr size_t kLongestName = 46;  // letters that a profile's check takes
constexpr size_t kLongestId = 51;

// It becomes the name of files.
void CheckName(const std::string& text, const char* what, size_t longest) {
  const bool isPlain = std::ranges::all_of(text, [](char c) {
    return c >= ' ' && c < 0x7F &&
           std::string_view("\\/:*?\"<>|").find(c) == std::string_view::npos;
  });
  if (text.empty() || text.size() > longest || !isPlain) {
    throw Failure(kBadArguments, std::string(what) + " has 1 to " + std::to_string(longest) +
                                     " letters of ASCII, none of them of \\/:*?\"<>|");
  }
}

UserDesignInfo Design(const UserArguments& arguments, const std::string& id) {
  CheckName(arguments.name, "a user mode's name", kLongestName);
  CheckName(id, "a user mode's id", kLongestId);
  if (!(arguments.gamma > 0 && arguments.gamma <= 10)) {
    throw Failure(kBadArguments, "a gamma is above 0 and at most 10");
  }
  for (const double coordinate : arguments.white) {
    if (!(coordinate > 0 && coordinate < 1)) {
      throw Failure(kBadArguments, "a white point's x and y lie between 0 and 1");
    }
  }
  UserDesignInfo info = {};
  info.serialNum = arguments.serial;
  info.mode = USRDESIGN_MODE;
  SetField(info.id, sizeof info.id, id, "id");
  SetField(info.modeName, sizeof info.modeName, arguments.name, "name");
  SetField(info.description, sizeof info.description, arguments.description, "description");
  info.gamut = GamutOf(arguments.gamut);
  info.whitePointX = arguments.white[0];
  info.whitePointY = arguments.white[1];
  SetField(info.whitePointXStr, sizeof info.whitePointXStr, Json(info.whitePointX).dump(), "x");
  SetField(info.whitePointYStr, sizeof info.whitePointYStr, Json(info.whitePointY).dump(), "y");
  info.gamma = arguments.gamma;
  SetField(info.gammaStr, sizeof info.gammaStr, Json(info.gamma).dump(), "gamma");
  return info;
}

const UserDesignInfo& Find(const std::vector<UserDesignInfo>& modes, const std::string& id) {
  const auto found =
      std::ranges::find_if(modes, [&](const UserDesignInfo& mode) { return Field(mode.id) == id; });
  if (found == modes.end()) {
    throw Failure(kBadArguments,
                  "there is no user mode \"" + id + "\"; \"veloractl user list\" names them");
  }
  return *found;
}

// A suffix makes ids of equal names differ.
std::string NewId(const std::string& name, const std::vector<UserDesignInfo>& modes) {
  for (int suffix = 1;; ++suffix) {
    std::string id = name + "%" + std::to_string(suffix);
    if (std::ranges::none_of(modes, [&](const UserDesignInfo& m) { return Field(m.id) == id; })) {
      return id;
    }
  }
}

Report UserList(Session& session) {
  Json rows = Json::array();
  for (const UserDesignInfo& mode : StoredUserModes(session)) {
    rows.push_back({{"id", Field(mode.id)},
                    {"name", Field(mode.modeName)},
                    {"serial", mode.serialNum},
                    {"gamut", NameOfGamut(mode.gamut)},
                    {"white", {mode.whitePointX, mode.whitePointY}},
                    {"gamma", mode.gamma},
                    {"profile", Field(mode.iccPath)},
                    {"description", Field(mode.description)}});
  }
  return Json{{"userModes", rows}};
}

Report UserSave(const UserArguments& arguments, Session& session) {
  const LoadedLibrary& library = session.LibraryWithModes();
  const std::vector<UserDesignInfo> modes = StoredUserModes(session);
  const UserDesignInfo design =
      Design(arguments, arguments.id.empty() ? NewId(arguments.name, modes) : arguments.id);
  Expect(library.SaveUserSelfColor(&design), "SaveUserSelfColor");
  StoreMode(library, USRDESIGN_MODE);
  return WithShown(session, {{"id", Field(design.id)}, {"saved", true}});
}

Report UserEdit(const UserArguments& arguments, const CLI::App& app, Session& session) {
  const LoadedLibrary& library = session.LibraryWithModes();
  const std::vector<UserDesignInfo> modes = StoredUserModes(session);
  const UserDesignInfo& old = Find(modes, arguments.id);
  UserArguments edited = arguments;
  const auto given = [&](const char* option) { return app.count(option) != 0; };
  edited.name = given("--name") ? arguments.name : Field(old.modeName);
  edited.description = given("--description") ? arguments.description : Field(old.description);
  edited.gamut = given("--gamut") ? arguments.gamut : NameOfGamut(old.gamut);
  edited.white =
      given("--white") ? arguments.white : std::vector<double>{old.whitePointX, old.whitePointY};
  edited.gamma = given("--gamma") ? arguments.gamma : old.gamma;
  edited.serial = given("--serial") ? arguments.serial : old.serialNum;
  const std::string oldId = Field(old.id);
  std::string id = arguments.newId.empty() ? oldId : arguments.newId;
  if (arguments.newId.empty() && edited.name != Field(old.modeName)) {
    id = NewId(edited.name, modes);
  }
  const UserDesignInfo design = Design(edited, id);
  Expect(library.EditUserColorField(&design, ToCodePage(oldId).c_str()), "EditUserColorField");
  StoreMode(library, USRDESIGN_MODE);
  return WithShown(session, {{"id", Field(design.id)}, {"oldId", oldId}, {"saved", true}});
}

Report UserSet(const std::string& id, Session& session) {
  const LoadedLibrary& library = session.LibraryWithModes();
  const std::vector<UserDesignInfo> modes = StoredUserModes(session);
  Expect(library.SetUserColorField(Find(modes, id).id), "SetUserColorField");
  StoreMode(library, USRDESIGN_MODE);
  return WithShown(session, {{"id", id}});
}

Report UserDelete(const std::string& id, Session& session) {
  const LoadedLibrary& library = session.LibraryWithModes();
  const std::vector<UserDesignInfo> modes = StoredUserModes(session);
  UserDesignInfo record = Find(modes, id);
  Expect(library.DeleteUserSelfColor(record.id), "DeleteUserSelfColor");
  Expect(library.DeleteUserDesignReg(&record),
         "the mode left the table, but DeleteUserDesignReg, which takes it out of the store,");
  return Json{{"id", id}, {"deleted", true}};
}

struct RenumberArguments {
  std::string id;
  double serial = 0;
};

Report UserRenumber(const RenumberArguments& arguments, Session& session) {
  const std::vector<UserDesignInfo> modes = StoredUserModes(session);
  UserDesignInfo record = Find(modes, arguments.id);
  record.serialNum = arguments.serial;
  Expect(session.Library().EditUserSerialNumReg(&record), "EditUserSerialNumReg");
  return Json{{"id", arguments.id}, {"serial", arguments.serial}};
}

// --- tune ---

struct TuneArguments {
  std::string mode;
  std::vector<double> gains;
  bool store = false;
};

constexpr double kLeastGain = 0.89999;
constexpr double kMostGain = 1.00001;

// A preset mode that has a name, or else the id of a user mode.
WhitePointFineTueInfo TunedMode(const std::string& name, Session& session) {
  WhitePointFineTueInfo info = {};
  info.r = info.g = info.b = 1;
  if (name.find('%') != std::string::npos) {
    const std::vector<UserDesignInfo> modes = StoredUserModes(session);
    SetField(info.id, sizeof info.id, Field(Find(modes, name).id), "id");
    info.mode = USRDESIGN_MODE;
    return info;
  }
  info.mode = ModeOf(name);
  if (info.mode == 0 || info.mode == 7 || info.mode == USRDESIGN_MODE) {
    throw Failure(kBadArguments,
                  "mode " + name + " has no fine tuning; other presets and ids of user modes have");
  }
  return info;
}

Report Tune(const TuneArguments& arguments, Session& session) {
  WhitePointFineTueInfo info = TunedMode(arguments.mode, session);
  if (arguments.gains.empty()) {
    const bool stored = session.Library().GetWhitePointTueValue(&info) == ResultOk;
    return Json{{"mode", arguments.mode},
                {"stored", stored},
                {"gains", stored ? Json{info.r, info.g, info.b} : Json()}};
  }
  for (const double gain : arguments.gains) {
    if (!(gain >= kLeastGain && gain <= kMostGain)) {
      throw Failure(kBadArguments, "a gain is from 0.89999 to 1.00001");
    }
  }
  if (arguments.gains.size() != 3) {
    throw Failure(kBadArguments, "tune takes three gains, of red, green and blue");
  }
  info.r = arguments.gains[0];
  info.g = arguments.gains[1];
  info.b = arguments.gains[2];
  const LoadedLibrary& library = session.LibraryWithModes();
  if (arguments.store) {
    Expect(library.SetWhitePointTueValue(&info), "SetWhitePointTueValue");
  }
  Expect(library.WhitePointFineTue(&info),
         arguments.store ? "the gains are stored, but WhitePointFineTue" : "WhitePointFineTue");
  return WithShown(
      session, {{"mode", arguments.mode}, {"stored", arguments.store}, {"gains", arguments.gains}});
}

// --- The commands ---

void AddModes(const CommandSet& commands) {
  commands.Add("modes", "This machine's colour modes, as registered", [](CLI::App& app) -> Action {
    app.footer(
        "They come from --modes FILE, or from modes.json beside the program:\n"
        "  {\"setType\": 1, \"defaultMode\": \"srgb\",\n"
        "   \"digestFile\": \"C:\\\\Program Files\\\\Norvex\\\\NxVelora\\\\IccDigest.bin\",\n"
        "   \"goldenFile\": \"\\\\Golden.bin\", \"lutFolder\": \"\",\n"
        "   \"modes\": [{\"mode\": \"p3\", \"profile\": \"C:\\\\...\\\\P3.icc\", \"gamut\": "
        "\"p3\",\n"
        "              \"gamma\": 2.2, \"gains\": [1, 1, 1], \"matrix\": [9 numbers]}]}\n"
        "setType: 0 DDC/CI, 1 3D LUT, 2 matrix, 3 gamma LUT and 3D LUT.");
    return Modes;
  });
  commands.Add("set-mode", "Switches to a preset colour mode", [](CLI::App& app) -> Action {
    const auto arguments = std::make_shared<ModeArguments>();
    app.add_option("MODE", arguments->mode, ModeNames() + "; or its number")->required();
    app.add_flag("--keep-setting", arguments->keep, "Don't store the mode as the one in force");
    app.footer(
        "Profile and panel switch together; then the mode is stored. On a machine with set type 0\n"
        "each call writes to the memory of the maker's monitors, which wears.\n"
        "  veloractl set-mode p3");
    return [arguments](Session& session) { return SetMode(*arguments, session); };
  });
  commands.Add("sync", "Brings mode and system profile together", [](CLI::App& app) -> Action {
    const auto modeDecides = std::make_shared<bool>(false);
    app.add_flag("--mode-decides", *modeDecides,
                 "A monitor without any profile gets that of the stored mode");
    app.footer(
        "Without it the system's profile decides: the output follows, and the mode is stored.");
    return [modeDecides](Session& session) { return Sync(*modeDecides, session); };
  });
  commands.Add("reset", "Takes the output back to the stored reset mode",
               [](CLI::App& app) -> Action {
                 app.footer("By color-mode.reset and color-mode.set-type: see \"get --all\".");
                 return Reset;
               });
}

void AddDesign(CLI::App& app, UserArguments& arguments) {
  app.add_option("--gamut", arguments.gamut, "srgb, p3, adobe, bt2020, ebu or smpte");
  app.add_option("--white", arguments.white, "CIE x and y of the white point")->expected(2);
  app.add_option("--gamma", arguments.gamma, "Exponent of the tone curve");
  app.add_option("--description", arguments.description, "For the user");
  app.add_option("--serial", arguments.serial, "The mode's number");
}

void AddUser(const CommandSet& commands) {
  const CommandSet group = commands.Group("user", "Colour modes of the user's own");
  group.Add("list", "The stored ones", [](CLI::App&) -> Action { return UserList; });
  group.Add("save", "Designs a mode and switches to it", [](CLI::App& app) -> Action {
    const auto arguments = std::make_shared<UserArguments>();
    app.add_option("NAME", arguments->name, "Shown to the user")->required();
    app.add_option("--id", arguments->id, "The mode's key; else NAME%1, NAME%2, ...");
    AddDesign(app, *arguments);
    app.footer("  veloractl user save Reading --gamut srgb --white 0.3457 0.3585 --gamma 2.2");
    return [arguments](Session& session) { return UserSave(*arguments, session); };
  });
  group.Add("edit", "Changes a mode and switches to it", [](CLI::App& app) -> Action {
    const auto arguments = std::make_shared<UserArguments>();
    app.add_option("ID", arguments->id, "The mode's key")->required();
    app.add_option("--name", arguments->name, "Another name");
    app.add_option("--new-id", arguments->newId, "Another key");
    AddDesign(app, *arguments);
    app.footer("What isn't given stays.\n  veloractl user edit Reading%1 --white 0.38 0.3768");
    return [arguments, &app](Session& session) { return UserEdit(*arguments, app, session); };
  });
  const auto byId = [&group](const char* name, const char* summary,
                             Report (*act)(const std::string&, Session&)) {
    group.Add(name, summary, [act](CLI::App& app) -> Action {
      const auto id = std::make_shared<std::string>();
      app.add_option("ID", *id, "The mode's key")->required();
      return [id, act](Session& session) { return act(*id, session); };
    });
  };
  byId("set", "Switches to a stored mode", UserSet);
  byId("delete", "Takes a mode out of table and store; its files stay", UserDelete);
  group.Add("renumber", "Stores another number of a mode", [](CLI::App& app) -> Action {
    const auto arguments = std::make_shared<RenumberArguments>();
    app.add_option("ID", arguments->id, "The mode's key")->required();
    app.add_option("SERIAL", arguments->serial, "Its number")->required();
    return [arguments](Session& session) { return UserRenumber(*arguments, session); };
  });
}

void AddTune(const CommandSet& commands) {
  commands.Add("tune", "Fine tuning of a mode's white point", [](CLI::App& app) -> Action {
    const auto arguments = std::make_shared<TuneArguments>();
    app.add_option("MODE", arguments->mode, "A preset mode, or the id of a user mode")->required();
    app.add_option("GAIN", arguments->gains, "Of red, green and blue, 0.89999 to 1.00001: shown")
        ->expected(0, 3);
    app.add_flag("--store", arguments->store, "Store them too");
    app.footer("Without gains: the stored ones.\n  veloractl tune p3 1 0.97 0.92 --store");
    return [arguments](Session& session) { return Tune(*arguments, session); };
  });
}

}  // namespace

void AddColorModeCommands(const CommandSet& commands) {
  AddModes(commands);
  AddUser(commands);
  AddTune(commands);
}

}  // namespace veloractl
