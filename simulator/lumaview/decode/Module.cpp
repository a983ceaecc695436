// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/Module.h"

#include <dlfcn.h>

#include <map>
#include <mutex>
#include <string>

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {
namespace {

/// The folder of the file that this code was loaded from, with a slash at the end; empty when it is not known.
std::string OwnFolder() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&FindInModule), &info) == 0 || info.dli_fname == nullptr) {
    return "";
  }
  const std::string path = info.dli_fname;
  return path.substr(0, path.rfind('/') + 1);
}

/// Beside a shared library, beside the libraries of an executable that holds this code, where it was installed.
void* LoadModule(const std::string& file) {
  const std::string own = OwnFolder();
  for (const std::string& folder :
       {own + "lumaview/", own + "../lib/lumaview/", std::string(LUMAVIEW_MODULE_FOLDER "/")}) {
    if (void* module = dlopen((folder + file).c_str(), RTLD_NOW | RTLD_LOCAL)) {
      return module;
    }
  }
  return nullptr;
}

/// What is loaded is found without a look at any folder, which a process that decodes may not take.
void* FindOrLoad(const std::string& file) {
  static std::mutex mutex;
  // Never destroyed: a picture may be decoded while the process ends.
  static auto& loaded = *new std::map<std::string, void*>;
  const std::lock_guard lock(mutex);
  const auto found = loaded.find(file);
  if (found != loaded.end()) {
    return found->second;
  }
  void* module = LoadModule(file);
  if (module != nullptr) {
    loaded.emplace(file, module);
  }
  return module;
}

}  // namespace

Result<const void*> FindInModule(const char* name, const char* symbol) {
  const std::string file = std::string("liblumaview-") + name + ".so";
  void* module = FindOrLoad(file);
  if (module == nullptr) {
    const char* reason = dlerror();
    return Error{kUnknownFormat, "the module " + file + " cannot be loaded: " + (reason != nullptr ? reason : "")};
  }
  const void* object = dlsym(module, symbol);
  if (object == nullptr) {
    return Error{kUnknownFormat, "the module " + file + " does not belong to this version"};
  }
  return object;
}

}  // namespace sim::lumaview
