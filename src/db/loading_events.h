// What the data side tells while a database is opened and its trace records arrive. It says what
// happens; the main window says it in words.
//
//   events.loadBegins();
//   events.rowsLoaded(1000);
//   events.loadEnded({.error = nullptr, .lost = recordset.losses()});
//
// The user-interface thread.
#pragma once

#include "engine/ado/recordset.h"

#include <cstdint>

/// How the loading of the trace records ended. What arrived until then is there to use.
struct LoadResult {
    const ado::Error* error = nullptr;  ///< null if every record could be read
    jet::Losses lost = {};              ///< damaged rows and pages that were left out
};

class LoadingEvents {
public:
    virtual ~LoadingEvents() = default;

    /// A database is about to be opened; it is open, as far as that was possible.
    virtual void openingBegins() = 0;
    virtual void openingEnds() = 0;

    /// Meanwhile, for a file of the older format.
    virtual void upgradeBegins() = 0;
    virtual void upgradeEnds() = 0;

    /// The trace records are asked for; that was refused, so that none are to come.
    virtual void loadBegins() = 0;
    virtual void loadRefused() = 0;

    /// More trace records are there, `count` at least, a multiple of 1,000 as a rule.
    virtual void rowsLoaded(std::uint32_t count) = 0;

    virtual void loadEnded(const LoadResult& result) = 0;

    /// After that, for a file that could not be upgraded: its unique traces are computed; they are
    /// there, as far as that was possible.
    virtual void computingBegins() = 0;
    virtual void computingEnds() = 0;
};
