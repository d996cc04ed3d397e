// How long a search takes in a sorted recordset, from the first row on.
//
//   find_time FILE TEXT [SORT [ROUNDS]]
//
// Prints the position found, 0 for none, and the median of the times in milliseconds. Each round
// opens the recordset anew, so nothing is known from the round before.
#include "engine/ado/recordset.h"
#include "engine/jet/text.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr std::u16string_view kQuery =
    u"SELECT Date, Process, Source, TraceNumber, Component, TraceLevel, Port, CallId, Trace "
    u"FROM tblTraces";

struct Search {
    std::u16string file;
    std::u16string text;
    std::u16string sort;
};

double milliseconds(const Search& search, int& position) {
    ado::Connection connection;
    connection.open(u"Data Source='" + search.file + u"'");
    ado::Recordset rows;
    rows.open(kQuery, connection);
    rows.setSort(search.sort);
    const auto start = std::chrono::steady_clock::now();
    rows.find(u"Trace Like '*" + search.text + u"*'");
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    position = std::max(0, rows.absolutePosition());
    return time.count();
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 3) {
        std::fputs("usage: find_time FILE TEXT [SORT [ROUNDS]]\n", stderr);
        return 2;
    }
    const Search search{jet::toUtf16(arguments[1]), jet::toUtf16(arguments[2]),
                        count > 3 ? jet::toUtf16(arguments[3]) : std::u16string{}};
    const int rounds = count > 4 ? std::max(1, std::atoi(arguments[4])) : 5;
    int position = 0;
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) times.push_back(milliseconds(search, position));
    std::sort(times.begin(), times.end());
    std::printf("%d %.1f\n", position, times[times.size() / 2]);
    return 0;
}
