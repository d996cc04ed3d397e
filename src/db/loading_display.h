// What loading a database shows to the user, as the data side sees it: the main window stands
// behind it, and in tests a record of calls.
//
// The user-interface thread.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

/// Mouse pointers by their customary numbers.
enum class MousePointer { Default = 0, Hourglass = 11, ArrowHourglass = 13 };

class LoadingDisplay {
public:
    virtual ~LoadingDisplay() = default;

    /// The small status window with its text, with or without its progress bar.
    virtual void displayStatus(const std::u16string& text, bool showProgress) = 0;
    virtual void hideStatus() = 0;

    /// Panel 1 of the status bar.
    virtual void setNotice(const std::u16string& text) = 0;
    /// Panel 3 of the status bar.
    virtual void setPosition(const std::u16string& text) = 0;
    virtual void setMousePointer(MousePointer pointer) = 0;

    /// The trace recordset has more rows than the grid knows of.
    virtual void rowsArrived() = 0;

    /// The number of rows that the grid holds at this moment.
    virtual std::int64_t gridRowCount() = 0;
    /// Runs the work to its end, with what it throws; the window is painted meanwhile, and takes no
    /// input.
    virtual void runWhilePainting(const std::function<void()>& work) = 0;
    /// Sorts the grid as a click on the heading of its column "Date" does.
    virtual void sortByDate() = 0;
};
