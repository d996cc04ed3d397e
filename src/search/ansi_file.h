// A text file in the system's ANSI code page, written from beginning to end.
//
//   AnsiFile file{path};
//   file.write(u"one\r\n");
//
// Characters that are not in the code page are replaced by similar ones, else by "?". Other
// programs may read the file meanwhile. Errors are RuntimeError with the customary numbers for
// files. The user-interface thread.
#pragma once

#include "src/search/export.h"

#include <windows.h>

#include <string>

class AnsiFile : public ExportTarget {
public:
    /// Creates the file or truncates an existing one.
    explicit AnsiFile(const std::wstring& path);
    ~AnsiFile() override;
    AnsiFile(const AnsiFile&) = delete;
    AnsiFile& operator=(const AnsiFile&) = delete;

    void write(std::u16string_view text) override;
    void restart() override;

private:
    HANDLE file_;
    std::string bytes_;  ///< reused, so that writing a block does not allocate
};
