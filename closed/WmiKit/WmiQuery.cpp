#include <windows.h>

#include <wbemidl.h>

#include <memory>
#include <string>

#include "WmiKit/WmiKit.h"

namespace NxSDK {
namespace {

// The calling thread's membership in COM, for as long as the object lives.
class ComMembership {
 public:
  ComMembership() : status_(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {}
  ~ComMembership() {
    if (SUCCEEDED(status_)) {
      CoUninitialize();
    }
  }
  ComMembership(const ComMembership&) = delete;
  ComMembership& operator=(const ComMembership&) = delete;

  // A thread that joined in the other way before is as good.
  HRESULT Status() const { return status_ == RPC_E_CHANGED_MODE ? S_OK : status_; }

 private:
  HRESULT status_;
};

struct Releaser {
  void operator()(IUnknown* object) const { object->Release(); }
};
template <typename T>
using ComPtr = std::unique_ptr<T, Releaser>;

struct BstrFreer {
  void operator()(wchar_t* text) const { SysFreeString(text); }
};
using Bstr = std::unique_ptr<wchar_t, BstrFreer>;

Bstr MakeBstr(const std::wstring& text) {
  return Bstr(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
}

class Variant {
 public:
  Variant() { VariantInit(&value_); }
  ~Variant() { VariantClear(&value_); }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;

  VARIANT* Get() { return &value_; }
  const VARIANT& operator*() const { return value_; }

 private:
  VARIANT value_;
};

// WMI answers for the calling user's rights.
HRESULT Impersonate(IUnknown* proxy) {
  const HRESULT status =
      CoSetProxyBlanket(proxy, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                        RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
  return status == E_NOINTERFACE ? S_OK : status;  // no proxy: WMI lives in this process
}

HRESULT Connect(const std::wstring& nameSpace, ComPtr<IWbemServices>& services) {
  IWbemLocator* locator = nullptr;
  HRESULT status = CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER,
                                    IID_IWbemLocator, reinterpret_cast<void**>(&locator));
  if (FAILED(status)) {
    return status;
  }
  const ComPtr<IWbemLocator> owner(locator);
  IWbemServices* connected = nullptr;
  status = locator->ConnectServer(MakeBstr(nameSpace).get(), nullptr, nullptr, nullptr, 0, nullptr,
                                  nullptr, &connected);
  if (FAILED(status)) {
    return status;
  }
  services.reset(connected);
  return Impersonate(connected);
}

HRESULT StartQuery(IWbemServices& services, const std::wstring& query,
                   ComPtr<IEnumWbemClassObject>& rows) {
  IEnumWbemClassObject* started = nullptr;
  const HRESULT status =
      services.ExecQuery(MakeBstr(L"WQL").get(), MakeBstr(query).get(),
                         WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, &started);
  if (FAILED(status)) {
    return status;
  }
  rows.reset(started);
  return Impersonate(started);
}

HRESULT ReadRows(IEnumWbemClassObject& rows, const std::wstring& property,
                 const std::function<void(const VARIANT&)>& onValue) {
  for (;;) {
    IWbemClassObject* row = nullptr;
    ULONG count = 0;
    HRESULT status = rows.Next(static_cast<LONG>(WBEM_INFINITE), 1, &row, &count);
    if (FAILED(status) || count == 0) {
      return FAILED(status) ? status : S_OK;
    }
    const ComPtr<IWbemClassObject> owner(row);
    Variant value;
    status = row->Get(property.c_str(), 0, value.Get(), nullptr, nullptr);
    if (FAILED(status)) {
      return status;
    }
    onValue(*value);
  }
}

}  // namespace

int WmiQuery::ExcuteQueryImpl(const std::wstring& query, const std::wstring& property,
                              const std::function<void(const VARIANT&)>& onValue, bool /*flag*/) {
  if (!onValue) {
    return E_INVALIDARG;
  }
  const ComMembership membership;  // outlives the COM objects below
  HRESULT status = membership.Status();
  if (FAILED(status)) {
    return status;
  }
  ComPtr<IWbemServices> services;
  status = Connect(nameSpace_, services);
  if (FAILED(status)) {
    return status;
  }
  ComPtr<IEnumWbemClassObject> rows;
  status = StartQuery(*services, query, rows);
  return FAILED(status) ? status : ReadRows(*rows, property, onValue);
}

void WmiQuery::GetResult(const VARIANT& value, std::wstring& text) {
  text.clear();
  VARIANT source = value;  // borrowed: the conversion reads it, through a pointer without const
  Variant converted;
  if (V_VT(&source) == VT_NULL ||
      FAILED(VariantChangeTypeEx(converted.Get(), &source, LOCALE_INVARIANT, VARIANT_ALPHABOOL,
                                 VT_BSTR))) {
    return;
  }
  const BSTR shown = V_BSTR(converted.Get());
  text.assign(shown ? shown : L"", SysStringLen(shown));
}

}  // namespace NxSDK
