#pragma once

namespace velora {

// The one instance of T in this process: built on first use, by the first thread that asks, and
// destroyed when the library is unloaded.
template <typename T>
class Singleton : public T {
 public:
  static T& GetInstance() {
    static Singleton instance;
    return instance;
  }

 private:
  Singleton() = default;
};

}  // namespace velora
