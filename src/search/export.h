// Trace records as tab-separated text, in blocks, so that the caller can process events in between.
//
//   TraceExport output{view, file};
//   while (output.writeBlock()) showProgress(output.position());
//
// The text: a line with the names of the fields, then blocks of 100 rows, each block followed by an
// empty line. Lines end with CR LF; Null is an empty field. The user-interface thread.
#pragma once

#include "engine/ado/recordset.h"

#include <string_view>

/// Where the text is written. Both members throw on failure.
class ExportTarget {
public:
    virtual ~ExportTarget() = default;

    virtual void write(std::u16string_view text) = 0;

    /// Discards everything written.
    virtual void restart() = 0;
};

class TraceExport {
public:
    /// `rows` is a view of the export's own, sorted as wanted; it and `target` must outlive the
    /// object.
    TraceExport(ado::Recordset& rows, ExportTarget& target);
    ~TraceExport();
    TraceExport(const TraceExport&) = delete;
    TraceExport& operator=(const TraceExport&) = delete;

    /// Writes the next rows, preceded by the heading the first time. False if all rows so far have
    /// been written. Throws ado::Error, and what the target throws.
    bool writeBlock();

    /// The next row, from 1; below 1 if there is none.
    int position() const { return rows_.absolutePosition(); }

private:
    void start();
    void writeHeading();

    ado::Recordset& rows_;
    ExportTarget& target_;
    bool started_ = false;
    bool reordered_ = false;  ///< rows that were still loading have been sorted in
};
