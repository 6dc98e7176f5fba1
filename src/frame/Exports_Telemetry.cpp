// Telemetry, and what the headers of the telemetry and WMI libraries emit into this library:
// VeloraCtlApi.def exports those by their decorated names. Events are too many for an entry line
// each.
#include "WmiKit/WmiKit.h"
#include "orbevent/orbevent.h"
#include "periphery/Telemetry.h"
#include "velora/VeloraCtlApi.h"

using velora::Telemetry;

template int NxSDK::WmiQuery::ExcuteQuery<std::wstring>(const std::wstring&, const std::wstring&,
                                                        std::vector<std::wstring>&, bool);

void OrbviewReportDataSync(int eventId, const char* key, const char* value) {
  Telemetry::ReportSync(eventId, key, value);
}

void OrbviewReportDataAsync(int eventId, const char* key, const char* value) {
  Telemetry::ReportAsync(eventId, key, value);
}
