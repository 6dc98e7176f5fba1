// The public header alone and its records' layouts, as C++.
#include "VeloraCtlApi_header.c"  // NOLINT(bugprone-suspicious-include): the same for both languages
