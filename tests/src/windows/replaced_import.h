// Puts a function of a test in the place of one that the program imports from the system, until the
// end of the block: for answers that the system cannot be made to give.
//
//   BOOL WINAPI writeHalf(HANDLE, LPCVOID, DWORD size, LPDWORD written, LPOVERLAPPED);
//
//   const ReplacedImport fullDisk{"WriteFile", reinterpret_cast<void*>(&writeHalf)};
//   EXPECT_THROW(file.write(u"text"), RuntimeError);
//
// Only calls of this program's own code are replaced, not those of its libraries. One thread at a
// time makes and destroys such objects; the function itself is called by any.
#pragma once

#include <windows.h>

#include <cstring>
#include <stdexcept>

class ReplacedImport {
public:
    /// Throws std::runtime_error if the program does not import a function of that name.
    ReplacedImport(const char* name, void* replacement) : slot_{slotOf(name)}, previous_{*slot_} {
        put(replacement);
    }
    ~ReplacedImport() { put(previous_); }
    ReplacedImport(const ReplacedImport&) = delete;
    ReplacedImport& operator=(const ReplacedImport&) = delete;

    /// The system's own function.
    void* original() const { return previous_; }

private:
    static const char* at(DWORD offset) {
        return reinterpret_cast<const char*>(::GetModuleHandleW(nullptr)) + offset;
    }

    /// Where the program looks up the function's address.
    static void** slotOf(const char* name) {
        const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(at(0));
        const auto* const headers =
            reinterpret_cast<const IMAGE_NT_HEADERS*>(at(static_cast<DWORD>(dos->e_lfanew)));
        const auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(
            at(headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress));
        for (; library->Name != 0; ++library) {
            const auto* names =
                reinterpret_cast<const IMAGE_THUNK_DATA*>(at(library->OriginalFirstThunk));
            auto* slots = reinterpret_cast<void* const*>(at(library->FirstThunk));
            for (; names->u1.AddressOfData != 0; ++names, ++slots) {
                if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
                const auto* const import = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(
                    at(static_cast<DWORD>(names->u1.AddressOfData)));
                if (std::strcmp(reinterpret_cast<const char*>(import->Name), name) == 0) {
                    return const_cast<void**>(slots);
                }
            }
        }
        throw std::runtime_error{"the program does not import the function"};
    }

    void put(void* function) const {
        DWORD before = 0;
        ::VirtualProtect(slot_, sizeof *slot_, PAGE_READWRITE, &before);
        *slot_ = function;
        ::VirtualProtect(slot_, sizeof *slot_, before, &before);
    }

    void** slot_;
    void* previous_;
};
