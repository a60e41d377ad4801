#include "VantoriModule.h"

#include <dlfcn.h>

namespace {

template <typename T>
bool Resolve(void* handle, const char* name, T& out, wxString& error) {
  dlerror();
  void* sym = dlsym(handle, name);
  if (sym == nullptr) {
    const char* why = dlerror();
    error = wxString::Format("the module has no entry point \"%s\" (%s)", name,
                             wxString::FromUTF8(why ? why : "not found"));
    return false;
  }
  out = reinterpret_cast<T>(sym);
  return true;
}

}  // namespace

bool LoadVantoriModule(const wxString& path, VantoriModule& module, wxString& error) {
  // RTLD_LOCAL keeps the module's symbols to itself; never RTLD_DEEPBIND,
  // which breaks the toolkit's event tables.
  module.handle = dlopen(path.fn_str(), RTLD_NOW | RTLD_LOCAL);
  if (module.handle == nullptr) {
    error = wxString::Format("cannot load %s: %s", path, wxString::FromUTF8(dlerror()));
    return false;
  }
  return Resolve(module.handle, "create", module.create, error) &&
         Resolve(module.handle, "show", module.show, error) &&
         Resolve(module.handle, "invoke", module.invoke, error) &&
         Resolve(module.handle, "destroy", module.destroy, error) &&
         Resolve(module.handle, "get_version", module.get_version, error);
}
