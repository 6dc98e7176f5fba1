/* The public header compiles alone, as C. */
#include "velora/VeloraCtlApi.h"
