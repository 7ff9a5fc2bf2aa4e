// How long it takes to load fliglaf.dll and to create its object, beside the same for a COM server
// that does nothing. Loads of the two alternate, so that both see the same machine.
#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fliglaf_type_library.h>
#include <vector>

namespace {

constexpr int kRounds = 201;

struct Server {
  const wchar_t* file;
  std::vector<double> microseconds = {};
};

double Now() {
  LARGE_INTEGER count = {};
  LARGE_INTEGER frequency = {};
  QueryPerformanceCounter(&count);
  QueryPerformanceFrequency(&frequency);
  return static_cast<double>(count.QuadPart) * 1e6 / static_cast<double>(frequency.QuadPart);
}

/// Loads the server, creates an object, releases it and unloads the server.
bool LoadAndCreate(Server& server) {
  const double start = Now();
  HMODULE const module = LoadLibraryW(server.file);
  if (module == nullptr) return false;
  const auto get = reinterpret_cast<HRESULT(WINAPI*)(REFCLSID, REFIID, void**)>(
      reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
  IClassFactory* factory = nullptr;
  IUnknown* object = nullptr;
  const bool created =
      get != nullptr &&
      SUCCEEDED(get(__uuidof(clsMPU), IID_IClassFactory, reinterpret_cast<void**>(&factory))) &&
      SUCCEEDED(factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&object)));
  server.microseconds.push_back(Now() - start);
  if (object != nullptr) object->Release();
  if (factory != nullptr) factory->Release();
  FreeLibrary(module);
  return created;
}

double Median(std::vector<double>& values) {
  std::ranges::nth_element(values, values.begin() + std::ssize(values) / 2);
  return values[values.size() / 2];
}

}  // namespace

int main() {
  CoInitialize(nullptr);
  for (const wchar_t* const file : {L"oleaut32.dll", L"user32.dll"})
    LoadLibraryW(file);  // as in any host
  std::array servers{Server{L"empty_server.dll"}, Server{L"fliglaf.dll"}};
  for (int round = 0; round < kRounds; ++round) {
    for (Server& server : servers) {
      if (LoadAndCreate(server)) continue;
      std::fprintf(stderr, "%ls cannot be loaded\n", server.file);
      return 1;
    }
  }
  const double empty = Median(servers[0].microseconds);
  const double library = Median(servers[1].microseconds);
  std::printf(
      "load and create, medians of %d: empty server %.0f us, fliglaf.dll %.0f us, ratio %.2f\n",
      kRounds, empty, library, library / empty);
  CoUninitialize();
  return 0;
}
