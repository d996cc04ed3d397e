#include "src/app/command_line.h"

#include <algorithm>

namespace modMain {
namespace {

constexpr char16_t kQuote = u'"';

bool isBlank(char16_t c) { return c == u' ' || c == u'\t'; }

/// Lower case for the letters that a switch name can sensibly hold.
std::u16string lowerCase(std::u16string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char16_t c) {
        return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c;
    });
    return text;
}

class Parser {
public:
    void take(char16_t c) {
        if (c == u'/' || (c == u'-' && !inQuotes_)) {
            beginSwitch();
        } else if (c == kQuote) {
            inQuotes_ = !inQuotes_;
        } else if (!isBlank(c) || inQuotes_) {
            gather(c);
        } else {
            endWord();
        }
    }

    CommandLine finish() {
        if (!name_.empty()) add(lowerCase(name_));
        return std::move(result_);
    }

private:
    /// The pair before is complete; what was gathered without a name waits for the next one.
    void beginSwitch() {
        inName_ = true;
        inValue_ = false;
        if (!name_.empty()) add(name_);
    }

    void gather(char16_t c) {
        if (inName_) {
            name_.push_back(c);
        } else if (inValue_) {
            value_.push_back(c);
        }
    }

    void endWord() {
        if (inName_) {
            inName_ = false;
            inValue_ = true;
        } else if (!name_.empty()) {
            add(lowerCase(name_));
        }
    }

    void add(const std::u16string& key) {
        if (!result_.emplace(key, value_).second) throw DuplicateArgument{name_};
        name_.clear();
        value_.clear();
    }

    CommandLine result_;
    std::u16string name_;
    std::u16string value_;
    bool inQuotes_ = false;
    bool inName_ = false;
    bool inValue_ = false;
};

}  // namespace

CommandLine parseCommandLine(std::u16string_view arguments) {
    Parser parser;
    for (const char16_t c : arguments) parser.take(c);
    return parser.finish();
}

}  // namespace modMain
