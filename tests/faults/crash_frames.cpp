#include "tests/faults/crash_frames.h"

#include <cxxabi.h>
#include <elfutils/libdwfl.h>

#include <cstdlib>
#include <memory>
#include <string_view>

namespace qz_fault {

namespace {

struct EndDwfl {
  void operator()(Dwfl* dwfl) const { dwfl_end(dwfl); }
};
using DwflPtr = std::unique_ptr<Dwfl, EndDwfl>;

struct Walk {
  Dwfl* dwfl;
  std::size_t most;
  std::vector<std::string> frames;
};

std::string demangled(const char* name) {
  if (std::string_view(name).substr(0, 2) != "_Z") return name;
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> text(abi::__cxa_demangle(name, nullptr, nullptr, &status), std::free);
  return status == 0 ? text.get() : name;
}

std::string base_name(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::string describe(Dwfl* dwfl, Dwarf_Addr address) {
  Dwfl_Module* const module = dwfl_addrmodule(dwfl, address);
  if (module == nullptr) return "? ?";
  const char* const path = dwfl_module_info(module, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  const char* const name = dwfl_module_addrname(module, address);
  return base_name(path == nullptr ? "?" : path) + " " + (name == nullptr ? "?" : demangled(name));
}

int take_frame(Dwfl_Frame* frame, void* argument) {
  auto& walk = *static_cast<Walk*>(argument);
  Dwarf_Addr address = 0;
  bool is_activation = false;
  if (!dwfl_frame_pc(frame, &address, &is_activation)) return DWARF_CB_ABORT;
  // A return address belongs to the call before it.
  walk.frames.push_back(describe(walk.dwfl, is_activation ? address : address - 1));
  return walk.frames.size() < walk.most ? DWARF_CB_OK : DWARF_CB_ABORT;
}

}  // namespace

std::vector<std::string> frames_of(pid_t process, pid_t thread, std::size_t most) {
  static char* no_debug_files = nullptr;
  Dwfl_Callbacks callbacks{};
  callbacks.find_elf = dwfl_linux_proc_find_elf;
  callbacks.find_debuginfo = dwfl_standard_find_debuginfo;
  callbacks.debuginfo_path = &no_debug_files;
  const DwflPtr dwfl(dwfl_begin(&callbacks));
  Walk walk{dwfl.get(), most, {}};
  if (dwfl && dwfl_linux_proc_report(dwfl.get(), process) == 0 && dwfl_report_end(dwfl.get(), nullptr, nullptr) == 0 &&
      dwfl_linux_proc_attach(dwfl.get(), process, true) == 0) {
    dwfl_getthread_frames(dwfl.get(), thread, take_frame, &walk);
  }
  return walk.frames;
}

}  // namespace qz_fault
