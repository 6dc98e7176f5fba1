// Settings by name, as a whole, and the flags.
#include "veloractl/Application.h"
#include "veloractl/Commands.h"
#include "veloractl/DescribedJson.h"
#include "veloractl/Features.h"
#include "veloractl/SettingsTable.h"

namespace veloractl {
namespace {

// --- get, set ---

struct GetArguments {
  std::string name;
  bool all = false;
};

Json Bound(const Setting& setting, double bound) {
  return setting.kind == Setting::Kind::kWhole ? Json(static_cast<int64_t>(bound)) : Json(bound);
}

Report Get(const GetArguments& arguments, Session& session) {
  if (!arguments.name.empty()) {
    return GetSetting(session, SettingOf(arguments.name));
  }
  if (!arguments.all) {
    throw Failure(kBadArguments, "which setting? \"veloractl get --all\" lists them");
  }
  Json rows = Json::array();
  for (const Setting& setting : AllSettings()) {
    Json row = GetSetting(session, setting);
    row.erase("key");
    row["least"] = Bound(setting, setting.least);
    row["most"] = Bound(setting, setting.most);
    row["meaning"] = setting.meaning;
    rows.push_back(std::move(row));
  }
  return Json{{"settings", rows}};
}

struct SetArguments {
  std::string name;
  std::vector<double> numbers;
  bool ring = false;
};

void Ring(Session& session, FeatureType feature) {
  const auto& library = session.Library();
  const ResultT opened = library.InitConfigSyncObject(feature);
  if (opened != ResultAlreadyInit) {
    Expect(opened, "InitConfigSyncObject");
  }
  Expect(library.NotifyConfigChange(feature), "NotifyConfigChange");
  if (opened == ResultOk) {
    Expect(library.FiniConfigSyncObject(feature), "FiniConfigSyncObject");
  }
}

Report Set(const SetArguments& arguments, Session& session) {
  const Setting& setting = SettingOf(arguments.name);
  const Numbers numbers = NumbersOf(setting, arguments.numbers, kBadArguments, setting.name);
  SetSetting(session, setting, numbers);
  if (arguments.ring) {
    Ring(session, setting.feature);
  }
  return Json{{"setting", setting.name},
              {"value", AsJson(setting, numbers)},
              {"stored", true},
              {"rung", arguments.ring}};
}

// --- flags ---

using Library = virtualnotebook::LoadedLibrary;

struct Flag {
  const char* name;
  int (*const Library::*get)(int);
  ResultT (*const Library::*set)(int, int);
  const char* setter;
};

constexpr Flag kFlags[] = {
    {"supported", &Library::IsFeatureSupport, &Library::SetFeatureSupport, "SetFeatureSupport"},
    {"multiUser", &Library::IsMultiUser, &Library::SetMultiUser, "SetMultiUser"},
    {"displayCheck", &Library::IsDisplayerCheck, &Library::SetDisplayerCheck, "SetDisplayerCheck"},
    {"firstUse", &Library::IsFirstUse, &Library::SetFirstUseState, "SetFirstUseState"},
};

struct FlagArguments {
  std::string feature;
  std::string flag;
  int value = -1;
};

const Flag& FlagOf(const std::string& name) {
  for (const Flag& flag : kFlags) {
    if (name == flag.name) {
      return flag;
    }
  }
  throw Failure(kBadArguments, "there is no flag \"" + name +
                                   "\"; there are supported, multiUser, displayCheck, firstUse");
}

Json FlagsOf(Session& session, const Feature& feature) {
  Json row = {{"feature", feature.name}};
  for (const Flag& flag : kFlags) {
    row[flag.name] = (session.Library().*flag.get)(feature.type);
  }
  return row;
}

Report Flags(const FlagArguments& arguments, Session& session) {
  if (!arguments.feature.empty()) {
    const Feature& feature = FeatureOf(arguments.feature);
    const Flag& flag = FlagOf(arguments.flag);
    if (arguments.value != 0 && arguments.value != 1) {
      throw Failure(kBadArguments, "a flag is 0 or 1");
    }
    Expect((session.Library().*flag.set)(feature.type, arguments.value), flag.setter);
  }
  Json rows = Json::array();
  for (const Feature& feature : Features()) {
    rows.push_back(FlagsOf(session, feature));
  }
  return Json{{"flags", rows}};
}

// --- settings export, import ---

Report Export(const std::string& file, Session& session) {
  Json settings = Json::object();
  for (const Setting& setting : AllSettings()) {
    Json entry = GetSetting(session, setting);
    entry.erase("setting");
    settings[setting.name] = std::move(entry);
  }
  Json flags = Json::object();
  for (const Feature& feature : Features()) {
    Json entry = FlagsOf(session, feature);
    entry.erase("feature");
    flags[feature.name] = std::move(entry);
  }
  const Json exported = {
      {"format", "veloractl settings 1"}, {"settings", settings}, {"flags", flags}};
  if (!file.empty()) {
    WriteFile(file, exported.dump(2) + "\n");
    return Json{{"file", file}, {"settings", settings.size()}};
  }
  return exported;
}

struct ImportArguments {
  std::string file;
  bool flags = false;
};

struct Change {
  std::string name;
  std::function<void()> make;
};

// Everything is looked at ahead of the first change.
std::vector<Change> Changes(const ImportArguments& arguments, Session& session) {
  DescribedJson file = DescribedJson::FromFile(arguments.file);
  const std::string format = file.Text("format", "");
  if (format != "veloractl settings 1") {
    file.Refuse("format", "is not \"veloractl settings 1\"");
  }
  std::vector<Change> changes;
  const Json content = Json::parse(ReadTextFile(arguments.file), nullptr, false, true);
  DescribedJson settings = file.Object("settings");
  for (const std::string& name : settings.Names()) {
    const Json& entry = content["settings"][name];
    const Json& value = entry.is_object() && entry.contains("value") ? entry["value"] : entry;
    if (value.is_null() || (entry.is_object() && entry.value("source", Json()) == "default")) {
      continue;
    }
    const auto known = std::ranges::find(AllSettings(), name, &Setting::name);
    if (known == AllSettings().end()) {
      settings.Refuse(name, "is no setting");
    }
    const Setting& setting = *known;
    const Numbers numbers = NumbersOf(setting, value, kBadFile, arguments.file + ": " + name);
    changes.push_back(
        {name, [&session, &setting, numbers] { SetSetting(session, setting, numbers); }});
  }
  DescribedJson flags = file.Object("flags");
  for (const Feature& feature : Features()) {
    DescribedJson row = flags.Object(feature.name);
    for (const Flag& flag : kFlags) {
      if (!row.Has(flag.name) || !arguments.flags) {
        continue;
      }
      const int value = row.Integer(flag.name, 0, 0, 1);
      changes.push_back(
          {std::string(feature.name) + " " + flag.name, [&session, &feature, &flag, value] {
             Expect((session.Library().*flag.set)(feature.type, value), flag.setter);
           }});
    }
  }
  flags.RefuseOthers();
  file.RefuseOthers();
  return changes;
}

Report Import(const ImportArguments& arguments, Session& session) {
  Json stored = Json::array();
  for (const Change& change : Changes(arguments, session)) {
    try {
      change.make();
    } catch (const Failure& failure) {
      return {Json{{"stored", stored}, {"failed", change.name}}, failure.Status(),
              std::string(failure.what()) + " at " + change.name + "; the " +
                  std::to_string(stored.size()) + " ahead of it were stored"};
    }
    stored.push_back(change.name);
  }
  return Json{{"stored", stored}};
}

void AddGetAndSet(const CommandSet& commands) {
  commands.Add("get", "A setting, and where its value comes from", [](CLI::App& app) -> Action {
    const auto arguments = std::make_shared<GetArguments>();
    app.add_option("SETTING", arguments->name, "Its name, such as temperature.value");
    app.add_flag("--all", arguments->all, "All settings, with range and meaning");
    app.footer(
        "source: registry, ini (the factory's default), default (the tool's own) or none. A first\n"
        "look stores the factory's default, as it does for any host.\n"
        "  veloractl get --all\n"
        "  veloractl get eye-protection.value --json");
    return [arguments](Session& session) { return Get(*arguments, session); };
  });
  commands.Add("set", "Stores a setting", [](CLI::App& app) -> Action {
    const auto arguments = std::make_shared<SetArguments>();
    app.add_option("SETTING", arguments->name, "Its name: \"get --all\" lists them")->required();
    app.add_option("VALUE", arguments->numbers, "One number; two of a point; three of gains")
        ->required()
        ->expected(1, 3);
    app.add_flag("--ring", arguments->ring, "Tell waiting processes of the change");
    app.footer(
        "Stores and shows nothing on the panel: \"veloractl fuse\" does.\n"
        "  veloractl set eye-protection.value 120\n"
        "  veloractl set temperature.point 100 60.5\n"
        "  veloractl set eye-protection.gains 1 0.95 0.8 --ring");
    return [arguments](Session& session) { return Set(*arguments, session); };
  });
}

void AddFlags(const CommandSet& commands) {
  commands.Add(
      "flags", "The features' flags; with arguments: sets one", [](CLI::App& app) -> Action {
        const auto arguments = std::make_shared<FlagArguments>();
        CLI::Option* const feature = app.add_option("FEATURE", arguments->feature, FeatureNames());
        CLI::Option* const flag = app.add_option("FLAG", arguments->flag,
                                                 "supported, multiUser, displayCheck or firstUse");
        CLI::Option* const value = app.add_option("VALUE", arguments->value, "0 or 1");
        feature->needs(flag);
        flag->needs(value);
        app.footer(
            "A process reads the flags once: others see a change at their next start.\n"
            "  veloractl flags\n"
            "  veloractl flags natural-color supported 1");
        return [arguments](Session& session) { return Flags(*arguments, session); };
      });
}

void AddSettingsFiles(const CommandSet& commands) {
  const CommandSet group = commands.Group("settings", "All settings as one JSON file");
  group.Add("export", "Settings and flags, with key and source of each",
            [](CLI::App& app) -> Action {
              const auto file = std::make_shared<std::string>();
              app.add_option("FILE", *file, "Written; else the JSON is printed");
              return [file](Session& session) { return Export(*file, session); };
            });
  group.Add("import", "Stores the settings of such a file", [](CLI::App& app) -> Action {
    const auto arguments = std::make_shared<ImportArguments>();
    app.add_option("FILE", arguments->file,
                   "As \"settings export\" writes it; a setting may be "
                   "its bare value")
        ->required();
    app.add_flag("--flags", arguments->flags, "The features' flags too");
    app.footer(
        "The whole file is checked first: one bad entry, and nothing is stored. Entries whose\n"
        "source is \"default\" are left out: nothing was stored where they come from.\n"
        "  {\"format\": \"veloractl settings 1\", \"settings\": {\"temperature.value\": 200}}");
    return [arguments](Session& session) { return Import(*arguments, session); };
  });
}

}  // namespace

void AddSettingsCommands(const CommandSet& commands) {
  AddGetAndSet(commands);
  AddFlags(commands);
  AddSettingsFiles(commands);
}

}  // namespace veloractl
