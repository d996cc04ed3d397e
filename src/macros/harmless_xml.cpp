#include "src/macros/harmless_xml.h"

#include "src/log/procedure.h"

#include <string>

namespace macros {
namespace {

constexpr std::int32_t kInvalidArgument = 5;

class Scanner {
public:
    explicit Scanner(std::u16string_view text) : rest_{text} {}

    void run() {
        while (toNextMarkup()) {
            if (skip(u"<!--", u"-->") || skip(u"<![CDATA[", u"]]>") || skip(u"<?", u"?>")) continue;
            if (rest_.starts_with(u"<!")) refuse(u"The text declares a document type");
            takeTag();
        }
    }

private:
    [[noreturn]] static void refuse(const std::u16string& reason) {
        throw RuntimeError{kInvalidArgument, reason};
    }

    bool toNextMarkup() {
        const std::size_t at = rest_.find(u'<');
        if (at == std::u16string_view::npos) return false;
        rest_.remove_prefix(at);
        return true;
    }

    /// Passes over a construct in which markup does not count. One without an end takes all that
    /// is left, as the parser will find.
    bool skip(std::u16string_view begin, std::u16string_view end) {
        if (!rest_.starts_with(begin)) return false;
        const std::size_t at = rest_.find(end, begin.size());
        rest_.remove_prefix(at == std::u16string_view::npos ? rest_.size() : at + end.size());
        return true;
    }

    void takeTag() {
        const bool closes = rest_.starts_with(u"</");
        const std::size_t end = endOfTag();
        const bool empty = end > 0 && rest_[end - 1] == u'/';
        if (closes) {
            --depth_;
        } else if (!empty && ++depth_ > kDeepestElement) {
            refuse(u"The text has too many elements within each other");
        }
        rest_.remove_prefix(end);
    }

    /// The place of the ">" that is not part of an attribute's value.
    std::size_t endOfTag() const {
        char16_t quote = 0;
        for (std::size_t at = 1; at < rest_.size(); ++at) {
            const char16_t c = rest_[at];
            if (quote != 0) {
                if (c == quote) quote = 0;
            } else if (c == u'"' || c == u'\'') {
                quote = c;
            } else if (c == u'>') {
                return at;
            }
        }
        return rest_.size();
    }

    std::u16string_view rest_;
    int depth_ = 0;
};

}  // namespace

void requireHarmlessXml(std::u16string_view text) { Scanner{text}.run(); }

}  // namespace macros
