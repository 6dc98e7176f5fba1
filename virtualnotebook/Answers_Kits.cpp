// CoreKit and WmiKit.
#include "virtualnotebook/Answers.h"

#include <windows.h>

#include <oleauto.h>

#include "virtualnotebook/Recorder.h"

namespace virtualnotebook::answers {
namespace {

// Lays bare what WmiQuery keeps to itself.
struct WmiQueryLayout {
  std::wstring nameSpace;
};
static_assert(sizeof(WmiQueryLayout) == sizeof(NxSDK::WmiQuery));

class TextVariant {
 public:
  explicit TextVariant(const std::wstring& text) {
    value_.vt = VT_BSTR;
    value_.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  }
  ~TextVariant() { SysFreeString(value_.bstrVal); }
  TextVariant(const TextVariant&) = delete;
  TextVariant& operator=(const TextVariant&) = delete;

  const VARIANT& Get() const { return value_; }

 private:
  VARIANT value_{};
};

}  // namespace

void LcdLogMessage(Notebook& notebook, decltype(::LcdLogMessage)* original, int level,
                   const wchar_t* text) {
  {
    const NotebookGuard guard(TheLock());
    notebook.log.push_back({level, text});
  }
  if (notebook.forwardLog) {
    original(level, text);
  }
}

int IsAdminPrivilege(Notebook& notebook, decltype(CoreKit::IsAdminPrivilege)*) {
  const NotebookGuard guard(TheLock());
  return notebook.administrator ? 1 : 0;
}

unsigned int GetLogonSessionId(Notebook& notebook, decltype(CoreKit::GetLogonSessionId)*) {
  const NotebookGuard guard(TheLock());
  return notebook.sessionId;
}

ResultT GetUserSIDBySessionId(Notebook& notebook, decltype(CoreKit::GetUserSIDBySessionId)*,
                              unsigned int sessionId, std::wstring& sid) {
  const NotebookGuard guard(TheLock());
  if (notebook.userSid.empty() || sessionId != notebook.sessionId) {
    return 1;
  }
  sid = notebook.userSid;
  return 0;
}

unsigned int GetDisplayType(Notebook& notebook, decltype(CoreKit::GetDisplayType)*) {
  const NotebookGuard guard(TheLock());
  return notebook.displayType;
}

int ExcuteQueryImpl(Notebook& notebook, ExcuteQueryImplFunction*, NxSDK::WmiQuery* self,
                    const std::wstring& query, const std::wstring& property,
                    const std::function<void(const VARIANT&)>& onValue, bool) {
  WmiAnswers::Rows rows;
  {
    const NotebookGuard guard(TheLock());
    const std::wstring& nameSpace = reinterpret_cast<const WmiQueryLayout*>(self)->nameSpace;
    const int status = Recorder::Wmi(notebook).Run(nameSpace, query, property, rows);
    if (status != 0) {
      return status;
    }
  }
  for (const std::wstring& text : rows) {
    onValue(TextVariant(text).Get());
  }
  return 0;
}

}  // namespace virtualnotebook::answers
