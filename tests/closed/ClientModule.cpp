// A client of the kits that exports what their headers bring along (ClientModule.def).
#include "WmiKit/WmiKit.h"
#include "orbevent/orbevent.h"

template int NxSDK::WmiQuery::ExcuteQuery<std::wstring>(const std::wstring&, const std::wstring&,
                                                        std::vector<std::wstring>&, bool);
