// The arrangement of the displays, and the time that it takes.
#include "virtualnotebook/Answers.h"

#include <algorithm>
#include <bit>

#include "virtualnotebook/Recorder.h"

namespace virtualnotebook::answers {
namespace {

constexpr UINT32 kWhichPaths = QDC_ALL_PATHS | QDC_ONLY_ACTIVE_PATHS | QDC_DATABASE_CURRENT;

bool AskForOneKindOfPath(UINT32 flags) { return std::has_single_bit(flags & kWhichPaths); }

}  // namespace

LONG GetDisplayConfigBufferSizes(Notebook& notebook, decltype(::GetDisplayConfigBufferSizes)*,
                                 UINT32 flags, UINT32* pathCount, UINT32* modeCount) {
  if (!AskForOneKindOfPath(flags) || pathCount == nullptr || modeCount == nullptr) {
    return ERROR_INVALID_PARAMETER;
  }
  const DisplayTopology& topology = notebook.topology;
  *pathCount = static_cast<UINT32>(topology.paths.size()) + notebook.topologySlack;
  *modeCount = static_cast<UINT32>(topology.modes.size()) + notebook.topologySlack;
  return ERROR_SUCCESS;
}

LONG QueryDisplayConfig(Notebook& notebook, decltype(::QueryDisplayConfig)*, UINT32 flags,
                        UINT32* pathCount, DISPLAYCONFIG_PATH_INFO* paths, UINT32* modeCount,
                        DISPLAYCONFIG_MODE_INFO* modes,
                        DISPLAYCONFIG_TOPOLOGY_ID* id) {  // NOLINT(readability-non-const-parameter)
  // The topology's id is told for the database's paths alone.
  if (!AskForOneKindOfPath(flags) || pathCount == nullptr || modeCount == nullptr ||
      (id != nullptr) != ((flags & QDC_DATABASE_CURRENT) != 0)) {
    return ERROR_INVALID_PARAMETER;
  }
  const DisplayTopology& topology = notebook.topology;
  if (*pathCount < topology.paths.size() || *modeCount < topology.modes.size()) {
    return ERROR_INSUFFICIENT_BUFFER;
  }
  std::ranges::copy(topology.paths, paths);
  std::ranges::copy(topology.modes, modes);
  *pathCount = static_cast<UINT32>(topology.paths.size());
  *modeCount = static_cast<UINT32>(topology.modes.size());
  return ERROR_SUCCESS;
}

LONG SetDisplayConfig(Notebook& notebook, decltype(::SetDisplayConfig)*, UINT32 pathCount,
                      DISPLAYCONFIG_PATH_INFO* paths, UINT32 modeCount,
                      DISPLAYCONFIG_MODE_INFO* modes, UINT32 flags) {
  const bool supplied = (flags & SDC_USE_SUPPLIED_DISPLAY_CONFIG) != 0;
  if ((flags & SDC_APPLY) == 0 || supplied != (paths != nullptr) ||
      (!supplied && pathCount + modeCount != 0)) {
    return ERROR_INVALID_PARAMETER;
  }
  const NotebookGuard guard(TheLock());
  if (supplied) {
    notebook.topology = {{paths, paths + pathCount}, {modes, modes + modeCount}};
  } else if ((flags & SDC_TOPOLOGY_EXTEND) != 0 && notebook.extendedTopology) {
    notebook.topology = *notebook.extendedTopology;
  }
  return ERROR_SUCCESS;
}

void Sleep(Notebook& notebook, decltype(::Sleep)* original, DWORD milliseconds) {
  original(notebook.sleeps ? milliseconds : 0);
}

}  // namespace virtualnotebook::answers
