// Arguments from the wide command line; output without translation of line ends.
#ifdef _WIN32

#include "tools/console.h"

#include "engine/jet/text.h"

#include <windows.h>
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
#include <stdio.h>

namespace plain {

std::vector<std::string> arguments(int, char**) {
    int count = 0;
    wchar_t** const values = CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> result;
    for (int i = 1; values && i < count; ++i) {
        const std::wstring value = values[i];
        result.push_back(jet::toUtf8(std::u16string{value.begin(), value.end()}));
    }
    ::LocalFree(values);
    return result;
}

void makeOutputBinary() { _setmode(_fileno(stdout), _O_BINARY); }

}  // namespace plain

#endif
