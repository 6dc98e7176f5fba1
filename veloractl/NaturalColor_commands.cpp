// Natural colour at work, and the light sensor.
#include <windows.h>

#include <wtypes.h>

// The identifiers of the Sensor API stand in this file.
#include <initguid.h>
#include <io.h>
#include <sensors.h>
#include <sensorsapi.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <mutex>
#include <thread>

#include "veloractl/Application.h"
#include "veloractl/Commands.h"
#include "veloractl/DescribedJson.h"
#include "veloractl/Features.h"
#include "veloractl/LightSensor.h"
#include "veloractl/Readings.h"
#include "veloractl/Registry.h"
#include "veloractl/SettingsTable.h"
#include "veloractl/Shown.h"
#include "veloractl/VirtualMachine.h"

namespace veloractl {
namespace {

using virtualnotebook::LoadedLibrary;
using virtualnotebook::Notebook;

// --- The factory's data ---

struct FactoryData {
  NatureColorDataIn data = {};
  std::vector<CctAlgoInfo> curve;
};

constexpr CctAlgoInfo kUsualCurve[] = {
    {.cct = 2700, .r = 1, .g = 0.81, .b = 0.58}, {.cct = 3400, .r = 1, .g = 0.87, .b = 0.71},
    {.cct = 4200, .r = 1, .g = 0.92, .b = 0.82}, {.cct = 5000, .r = 1, .g = 0.96, .b = 0.90},
    {.cct = 6500, .r = 1, .g = 1, .b = 1},       {.cct = 7500, .r = 0.93, .g = 0.97, .b = 1},
    {.cct = 9000, .r = 0.86, .g = 0.94, .b = 1},
};

FactoryData ReadFactoryData(const std::string& file) {
  DescribedJson object =
      file.empty() ? DescribedJson(Json::object(), "") : DescribedJson::FromFile(file);
  FactoryData factory;
  factory.data.frameCount = object.Integer("frameCount", 20, 0, 10000);
  factory.data.frameTime = object.Integer("frameTime", 1, 0, 60000);
  factory.data.dimmingThreshold =
      static_cast<float>(object.Number("dimmingThreshold", 100, 0, 100000));
  factory.data.minLuma = static_cast<float>(object.Number("darkKelvin", 3400, 0, 100000));
  factory.data.luminanceThreshold = static_cast<float>(object.Number("darkLux", 50, 0, 1000000));
  factory.data.monitorType = object.Integer("monitorType", 0, 0, 2);
  factory.data.executionType = object.Integer("executionType", 1, 0, 1);
  for (DescribedJson& point : object.Objects("curve")) {
    factory.curve.push_back({.cct = static_cast<float>(point.Number("cct", 0, 1, 100000)),
                             .r = point.Number("r", 1, 0, 1),
                             .g = point.Number("g", 1, 0, 1),
                             .b = point.Number("b", 1, 0, 1)});
    point.RefuseOthers();
  }
  if (!object.Has("curve")) {
    factory.curve.assign(std::begin(kUsualCurve), std::end(kUsualCurve));
  }
  if (factory.curve.size() == 1 ||
      std::ranges::adjacent_find(factory.curve, std::greater_equal(), &CctAlgoInfo::cct) !=
          factory.curve.end()) {
    object.Refuse("curve", "is not empty or ascending in cct, with two points at least");
  }
  object.RefuseOthers();
  return factory;
}

// Natural colour, running for as long as the object lives.
class Running {
 public:
  Running(const LoadedLibrary& library, FactoryData& factory) : library_(library) {
    factory.data.algoInfo = factory.curve.data();
    factory.data.algoInfoCnt = static_cast<int32_t>(factory.curve.size());
    library_.InitNatureColor(&factory.data);
  }
  ~Running() { library_.FiniNatureColor(); }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

 private:
  const LoadedLibrary& library_;
};

// --- A run ---

struct NaturalRunArguments {
  std::string readings;
  std::string factoryFile;
  unsigned seconds = 10;
  bool fromSensor = false;
};

Json Number(const std::optional<float>& number) {
  return !number ? Json("-") : std::isnan(*number) ? Json("nan") : Json(*number);
}

// On the display, as the library stored it; null: nothing yet.
Json DeliveredKelvin(Session& session) {
  const Hive hive = HiveOf(session, FEATURE_TYPE_NATURAL_COLOR);
  const Json stored =
      ReadRegistry(hive.root, hive.prefix + kVeloraKey + L"\\NaturalColor", L"SensorColor");
  return stored.is_string() ? Json(std::strtod(stored.get<std::string>().c_str(), nullptr))
                            : Json();
}

void ShowFrame(const Json& kelvin, size_t frame) {
  if (_isatty(_fileno(stderr))) {
    std::fprintf(stderr, "\rframe %zu: %s K   ", frame, kelvin.dump().c_str());
  }
}

// Plays readings on the virtual sensor, one behind the other, and looks at what each brings.
class VirtualRun {
 public:
  VirtualRun(Session& session, const FactoryData& factory)
      : session_(session),
        notebook_(session.Virtual()->Notebook()),
        frames_(static_cast<size_t>(factory.data.frameCount == 0 ? 50 : factory.data.frameCount) +
                1) {
    Await(0);
  }

  void Play(const Reading& reading) {
    const size_t starts = CountLogged(L"StartCct:isEnableCctDimming = 1");
    const size_t before = CountFrames();
    bool heard = true;
    if (reading.kind == Reading::Kind::kReport) {
      heard = notebook_.ReportLight({Value(reading.lux), Value(reading.kelvin)}).has_value();
    } else {
      const bool gone = reading.kind == Reading::Kind::kGone;
      heard = notebook_.ReportSensorState(gone ? SENSOR_STATE_NOT_AVAILABLE : SENSOR_STATE_READY)
                  .has_value();
    }
    const bool started = CountLogged(L"StartCct:isEnableCctDimming = 1") > starts;
    dimmings_ += size_t{started};
    Await(started ? before + frames_ : before);
    rows_.push_back({{"time", reading.time},
                     {"lux", reading.kind == Reading::Kind::kGone   ? Json("gone")
                             : reading.kind == Reading::Kind::kBack ? Json("back")
                                                                    : Number(reading.lux)},
                     {"kelvin", Number(reading.kelvin)},
                     {"heard", heard},
                     {"dimming", started},
                     {"frames", CountFrames() - before},
                     {"delivered", DeliveredKelvin(session_)}});
    PrintProgress("\r" + std::to_string(rows_.size()) + ": " +
                  std::to_string(CountFrames() - before) + " frames, now " +
                  DeliveredKelvin(session_).dump() + " K");
  }

  Json Result() const {
    return {{"readings", rows_}, {"dimmings", dimmings_}, {"frames", CountFrames()}};
  }

 private:
  static std::optional<PROPVARIANT> Value(const std::optional<float>& number) {
    return number ? std::optional(virtualnotebook::SensorFloat(*number)) : std::nullopt;
  }

  size_t CountLogged(const wchar_t* start) const {
    size_t count = 0;
    notebook_.Locked([&] {
      for (const auto& line : notebook_.log) {
        count += size_t{line.text.starts_with(start)};
      }
    });
    return count;
  }

  size_t CountFrames() const { return CountLogged(L"frameIndex_ = "); }

  // Until so many frames were delivered, or none comes any more: a dimming that the platform
  // refused ends early, and one in the other direction takes another's place.
  void Await(size_t frames) const {
    constexpr ULONGLONG kPatience = 1000;  // milliseconds without a frame
    size_t seen = CountFrames();
    ULONGLONG last = GetTickCount64();
    while (seen < frames && GetTickCount64() - last < kPatience) {
      Sleep(1);
      const size_t now = CountFrames();
      if (now != seen) {
        seen = now;
        last = GetTickCount64();
        ShowFrame(DeliveredKelvin(session_), seen);
      }
    }
  }

  Session& session_;
  Notebook& notebook_;
  size_t frames_;
  size_t dimmings_ = 0;
  Json rows_ = Json::array();
};

// By this machine's own sensor.
Json SensorRun(Session& session, unsigned seconds) {
  Json rows = Json::array();
  const ULONGLONG start = GetTickCount64();
  Json shown;
  while (GetTickCount64() - start < seconds * 1000ULL) {
    const Json kelvin = DeliveredKelvin(session);
    if (kelvin != shown) {
      shown = kelvin;
      rows.push_back(
          {{"time", static_cast<double>(GetTickCount64() - start) / 1000}, {"delivered", kelvin}});
      PrintProgress("frame " + std::to_string(rows.size()) + ": " + kelvin.dump() + " K");
    }
    Sleep(10);
  }
  return {{"frames", rows}};
}

Report Run(const NaturalRunArguments& arguments, Session& session) {
  FactoryData factory = ReadFactoryData(arguments.factoryFile);
  const bool fromFile = !arguments.readings.empty();
  const std::vector<Reading> readings =
      fromFile ? ReadingsOf(arguments.readings) : std::vector<Reading>{};
  if (fromFile == arguments.fromSensor) {
    throw Failure(kBadArguments, "readings come from a FILE or from --sensor, one of both");
  }
  if (fromFile && session.Virtual() == nullptr) {
    throw Failure(
        kBadArguments,
        "readings of a file need a virtual notebook: this machine's sensor tells its own");
  }
  const LoadedLibrary& library = session.StartedLibrary();
  if (fromFile) {
    Expect(library.SetNatureColorStatus(1), "SetNatureColorStatus");
  } else if (library.GetNatureColorStatus(0) == 0) {
    throw Failure(kRefused,
                  "natural colour is off: \"veloractl set natural-color.status 1\" turns it on");
  }
  const Running running(library, factory);
  if (!fromFile) {
    return SensorRun(session, arguments.seconds);
  }
  session.Virtual()->Notebook().ForgetRecords();
  VirtualRun run(session, factory);
  for (const Reading& reading : readings) {
    run.Play(reading);
  }
  return WithShown(session, run.Result());
}

// --- sensor ---

// What a light sensor reports, for as long as the object lives.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): COM objects have none
class Recording final : public ISensorEvents {
 public:
  Recording() : start_(GetTickCount64()) {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    const HRESULT made =
        CoCreateInstance(__uuidof(::SensorManager), nullptr, CLSCTX_INPROC_SERVER,
                         __uuidof(ISensorManager), reinterpret_cast<void**>(&manager_));
    if (FAILED(made) || FAILED(manager_->GetSensorsByCategory(SENSOR_CATEGORY_LIGHT, &sensors_)) ||
        FAILED(sensors_->GetAt(0, &sensor_)) || FAILED(sensor_->SetEventSink(this))) {
      Close();
      throw Failure(kRefused, "there is no light sensor");
    }
  }
  ~Recording() { Close(); }
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  std::vector<Reading> Readings() const {
    const std::lock_guard guard(mutex_);
    return readings_;
  }

  HRESULT STDMETHODCALLTYPE OnDataUpdated(ISensor*, ISensorDataReport* report) override {
    Reading reading;
    reading.lux = Read(report, SENSOR_DATA_TYPE_LIGHT_LEVEL_LUX);
    reading.kelvin = Read(report, SENSOR_DATA_TYPE_LIGHT_TEMPERATURE_KELVIN);
    Add(reading);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE OnStateChanged(ISensor*, SensorState state) override {
    Add({.kind = state == SENSOR_STATE_READY ? Reading::Kind::kBack : Reading::Kind::kGone});
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE OnEvent(ISensor*, REFGUID, IPortableDeviceValues*) override {
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE OnLeave(REFSENSOR_ID) override {
    Add({.kind = Reading::Kind::kGone});
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    const bool known = id == __uuidof(IUnknown) || id == __uuidof(ISensorEvents);
    *object = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }  // lives on the stack
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

 private:
  static std::optional<float> Read(ISensorDataReport* report, const PROPERTYKEY& key) {
    PROPVARIANT value = {};
    std::optional<float> number;
    if (SUCCEEDED(report->GetSensorValue(key, &value)) && value.vt == VT_R4) {
      number = value.fltVal;
    }
    PropVariantClear(&value);
    return number;
  }

  void Add(Reading reading) {
    const std::lock_guard guard(mutex_);
    reading.time = static_cast<double>(GetTickCount64() - start_) / 1000;
    readings_.push_back(reading);
    PrintProgress(std::to_string(readings_.size()) + " readings");
  }

  void Close() {
    if (sensor_ != nullptr) {
      sensor_->SetEventSink(nullptr);
    }
    for (IUnknown* const object :
         {static_cast<IUnknown*>(sensor_), static_cast<IUnknown*>(sensors_),
          static_cast<IUnknown*>(manager_)}) {
      if (object != nullptr) {
        object->Release();
      }
    }
    CoUninitialize();
  }

  const ULONGLONG start_;
  ISensorManager* manager_ = nullptr;
  ISensorCollection* sensors_ = nullptr;
  ISensor* sensor_ = nullptr;
  mutable std::mutex mutex_;
  std::vector<Reading> readings_;
};

struct RecordArguments {
  std::string file;
  unsigned seconds = 60;
  std::string play;
};

Report Record(const RecordArguments& arguments, Session& session) {
  const std::vector<Reading> played =
      arguments.play.empty() ? std::vector<Reading>{} : ReadingsOf(arguments.play);
  session.Library();
  VirtualMachine* const machine = session.Virtual();
  if (machine == nullptr && !played.empty()) {
    throw Failure(kBadArguments, "--play needs a virtual notebook");
  }
  const Recording recording;
  for (const Reading& reading : played) {
    const auto value = [](const std::optional<float>& number) {
      return number ? std::optional(virtualnotebook::SensorFloat(*number)) : std::nullopt;
    };
    if (reading.kind == Reading::Kind::kReport) {
      machine->Notebook().ReportLight({value(reading.lux), value(reading.kelvin)});
    } else {
      machine->Notebook().ReportSensorState(
          reading.kind == Reading::Kind::kGone ? SENSOR_STATE_NOT_AVAILABLE : SENSOR_STATE_READY);
    }
  }
  const ULONGLONG end = GetTickCount64() + (played.empty() ? arguments.seconds * 1000ULL : 0);
  while (GetTickCount64() < end) {
    Sleep(10);
  }
  const std::vector<Reading> readings = recording.Readings();
  WriteFile(arguments.file, FormatReadings(readings));
  return Json{{"file", arguments.file}, {"readings", readings.size()}};
}

Report ListTroubles(Session&) {
  Json rows = Json::array();
  for (const Trouble& trouble : Troubles()) {
    rows.push_back(
        {{"name", trouble.name}, {"readings", trouble.readings.size()}, {"story", trouble.story}});
  }
  return Json{{"troubles", rows}};
}

constexpr char kFactoryHelp[] =
    "JSON of the factory's data: frameCount, frameTime (ms), dimmingThreshold (kelvin), "
    "darkKelvin, "
    "darkLux, monitorType, executionType, curve: [{cct, r, g, b}, ...]";

}  // namespace

std::optional<unsigned> CountLightSensors() {
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  std::optional<unsigned> counted;
  ISensorManager* manager = nullptr;
  if (SUCCEEDED(CoCreateInstance(__uuidof(::SensorManager), nullptr, CLSCTX_INPROC_SERVER,
                                 __uuidof(ISensorManager), reinterpret_cast<void**>(&manager)))) {
    ISensorCollection* sensors = nullptr;
    ULONG count = 0;
    if (SUCCEEDED(manager->GetSensorsByCategory(SENSOR_CATEGORY_LIGHT, &sensors))) {
      sensors->GetCount(&count);
      sensors->Release();
    }
    counted = count;
    manager->Release();
  }
  CoUninitialize();
  return counted;
}

void AddNaturalColorCommands(const CommandSet& commands) {
  const CommandSet natural =
      commands.Group("natural", "Natural colour: the panel follows the light");
  natural.Add("run", "Runs natural colour in this process", [](CLI::App& app) -> Action {
    const auto arguments = std::make_shared<NaturalRunArguments>();
    app.add_option("FILE", arguments->readings,
                   "Readings as CSV, lux,kelvin,time, or a trouble's name: virtual notebook only");
    app.add_flag("--sensor", arguments->fromSensor, "Readings of this machine's sensor");
    app.add_option("--seconds", arguments->seconds, "How long, with --sensor");
    app.add_option("--factory", arguments->factoryFile, kFactoryHelp)->type_name("FILE");
    app.footer(
        "Only one process of a machine may run it: stop the service first.\n"
        "  veloractl --virtual natural run oscillation");
    return [arguments](Session& session) { return Run(*arguments, session); };
  });
  const CommandSet sensor = commands.Group("sensor", "The light sensor");
  sensor.Add("troubles", "The troubles that can be replayed",
             [](CLI::App&) -> Action { return ListTroubles; });
  sensor.Add("record", "Writes what the sensor reports as CSV", [](CLI::App& app) -> Action {
    const auto arguments = std::make_shared<RecordArguments>();
    app.add_option("FILE", arguments->file, "Written")->required();
    app.add_option("--seconds", arguments->seconds, "How long");
    app.add_option("--play", arguments->play,
                   "Virtual notebook: what its sensor reports, a trouble's name or a CSV file");
    return [arguments](Session& session) { return Record(*arguments, session); };
  });
  sensor.Add("replay", "Replays readings on a virtual notebook's sensor",
             [](CLI::App& app) -> Action {
               const auto arguments = std::make_shared<NaturalRunArguments>();
               app.add_option("FILE", arguments->readings,
                              "CSV of \"sensor record\", or a name of \"sensor troubles\"")
                   ->required();
               app.add_option("--factory", arguments->factoryFile, kFactoryHelp)->type_name("FILE");
               return [arguments](Session& session) { return Run(*arguments, session); };
             });
}

}  // namespace veloractl
