#include "tools/traces/macro_definitions.h"

#include <algorithm>
#include <map>
#include <set>

namespace traces {

namespace {

struct Group {
    std::u16string_view name;
    std::u16string_view description;  ///< empty: the group has none
    std::vector<std::u16string_view> traces;
    bool hidden = false;
};

const std::vector<Group>& groups() {
    static const std::vector<Group> all{
        {u"Calls", u"From ringing to clearing", {u"Incoming calls", u"Outgoing calls"}},
        {u"Messages", u"Recording and delivery", {u"Delivery", u"Recording", u"Delivery"}},
        {u"Transfers", u"", {u"Transfers, all steps"}},
        {u"Fax", u"Sending & receiving", {u"Fax in", u"Fax out"}},
        {u"Paging", u"Zones and lamps", {u"Paging jobs"}},
        {u"Directory", u"Changes of the directory", {u"Directory", u"Index"}},
        {u"Night mode", u"Tables and timers", {u"Night mode"}},
        {u"Queues", u"Seats, queues, hunt groups", {u"Queue entries", u"Seats"}},
        {u"Audio", u"Tones, echo, jitter", {u"Tones", u"Echo"}},
        {u"Störungen", u"Ausfälle von Leitungen", {u"Leitungen"}},
        {u"留守番電話", u"伝言の再生", {u"再生"}},
        {u"Internal", u"Not for customers", {u"Spool"}, true},
        {u"Everything", u"", {u"All components"}},
    };
    return all;
}

/// The levels that each component has.
std::map<std::u16string, std::set<std::int16_t>> levelsOf(const std::vector<TraceOrigin>& origins) {
    std::map<std::u16string, std::set<std::int16_t>> levels;
    for (const TraceOrigin& origin : origins) levels[origin.component].insert(origin.level);
    return levels;
}

std::u16string escaped(std::u16string_view text) {
    std::u16string out;
    for (const char16_t unit : text) {
        if (unit == u'&') {
            out += u"&amp;";
        } else {
            out += unit;
        }
    }
    return out;
}

std::u16string number(std::int16_t value) {
    const std::string digits = std::to_string(value);
    return {digits.begin(), digits.end()};
}

std::u16string component(const std::u16string& name, const std::set<std::int16_t>& levels) {
    std::u16string xml = u"<DIAG GROUP=\"" + escaped(name) + u"\">";
    for (const std::int16_t level : levels) xml += u"<FLAG ID=\"" + number(level) + u"\"/>";
    return xml + u"</DIAG>";
}

}  // namespace

std::vector<std::u16string> macroDefinitions(const std::vector<TraceOrigin>& origins) {
    const auto levels = levelsOf(origins);
    std::vector<std::u16string> rows;
    auto next = levels.begin();
    for (const Group& group : groups()) {
        const bool everything = group.name == u"Everything";
        for (const std::u16string_view trace : group.traces) {
            std::u16string xml = u"<GA NAME=\"" + escaped(group.name) + u"\"";
            if (group.hidden) xml += u" DONTSHOW=\"1\"";
            xml += u">";
            if (!group.description.empty()) {
                xml += u"<DESCRIPTION>" + escaped(group.description) + u"</DESCRIPTION>";
            }
            xml += u"<TRACE NAME=\"" + escaped(trace) + u"\"><DESCRIPTION>What to switch on for " +
                   escaped(trace) + u"</DESCRIPTION>";
            constexpr int kComponents = 3;
            for (int i = 0; everything ? i < static_cast<int>(levels.size()) : i < kComponents;
                 ++i) {
                if (next == levels.end()) next = levels.begin();
                xml += component(next->first, next->second);
                ++next;
            }
            rows.push_back(xml + u"</TRACE></GA>");
        }
    }
    return rows;
}

}  // namespace traces
