// The platform library's start and stop.
#include "VeloraPlatform/VeloraPlatform.h"
#include "velora/VeloraCtlApi.h"

int Init() { return PlatformInit(); }

int Fini() { return PlatformFini(); }
