#pragma once

#include <windows.h>

#include <string>

#include "velora/VeloraCtlApi.h"

namespace velora {

// Where one feature keeps its settings. A service and an application of the same user reach the
// same values:
//
//   multi-user   administrator   root                 path
//   no           either          HKEY_LOCAL_MACHINE   feature key
//   yes          no              HKEY_CURRENT_USER    feature key
//   yes          yes             HKEY_USERS           SID, "\", feature key
//
// The choice is made at construction and stays.
class MultiUserReg {
 public:
  explicit MultiUserReg(FeatureType featureType);
  virtual ~MultiUserReg() = default;

  // Looks up the user of the logon session again, in a process with administrator rights and for a
  // multi-user feature. From then on the object addresses the root of that user's hive, without the
  // feature key. Not while another thread uses the object.
  void SwitchUser();

 protected:
  bool isMultiUser_ = false;
  bool isAdmin_ = false;
  HKEY rootKey_ = HKEY_LOCAL_MACHINE;
  std::wstring regPath_;

 private:
  void ResolveUser();
};

}  // namespace velora
