// OwnUnwindTables.cpp - lets exceptions work in a 32-bit module with a libgcc of its own.
//
// Where the process has loaded libgcc_s_dw2-1.dll, the start code of such a module registers the
// unwind tables there.  But the module unwinds with its own libgcc, which then finds no handler and
// ends the program.  So they are registered in that one, too.  This has to be the first object file
// that is linked.
#include <array>

extern "C" {

// Of libgcc: unwind-dw2-fde.h.
struct dwarf_eh_bases {
  void* textBase;
  void* dataBase;
  void* function;
};
const void* _Unwind_Find_FDE(void* address, dwarf_eh_bases* bases);
void __register_frame_info(const void* tables, void* object);

extern const char kozorUnwindTables[];  // from this file's to the end
}

asm(".section .eh_frame,\"dr\"\n"
    "_kozorUnwindTables:\n"
    ".text\n");

namespace {

[[gnu::constructor]] void RegisterUnwindTables() {
  static std::array<void*, 8> object;  // libgcc's record, which has six words
  dwarf_eh_bases bases{};
  const bool isKnown =
      _Unwind_Find_FDE(reinterpret_cast<void*>(&RegisterUnwindTables), &bases) != nullptr;
  if (!isKnown) __register_frame_info(kozorUnwindTables, object.data());
}

}  // namespace
