#include "tools/traces/trace_generator.h"

#include <algorithm>
#include <iterator>

namespace traces {

namespace {

using Word = std::u16string_view;

constexpr std::size_t kOriginCount = 104;
constexpr std::int64_t kFirstSecond = 38839LL * 86400 + 8 * 3600;  ///< 2006-05-02 08:00
constexpr std::size_t kLongText = 5000;

constexpr Word kComponents[] = {
    u"AccessGate", u"BillingFeed", u"CallRouter", u"ClockSync",   u"ConfigStore", u"CueSheet",
    u"DeskBridge", u"DialAssist",  u"DropBox",    u"EchoGuard",   u"FaxStage",    u"GroupCast",
    u"HuntGroup",  u"IdleSweep",   u"JobSpool",   u"KeypadInput", u"LampDriver",  u"LineMonitor",
    u"MailRelay",  u"NightMode",   u"OutDial",    u"PagingZone",  u"QueueKeeper", u"RingPattern",
    u"StoreIndex", u"ToneDetect",  u"Übergabe",   u"VoiceForm",   u"WakeUp-Call", u"留守番電話",
};

constexpr Word kProcesses[] = {
    u"archiver", u"beaconsvc", u"callhost",  u"deskapi",  u"exportd",  u"faxhost",  u"gatekeep",
    u"hubcore",  u"indexer",   u"jobrunner", u"keyserv",  u"linehost", u"mailpump", u"nightop",
    u"opsview",  u"pagerd",    u"queuesvc",  u"recorder", u"statsd",   u"tonehost", u"updater",
    u"voxhost",  u"webdesk",   u"xferhost",  u"yardd",    u"zonesync",
};

constexpr Word kClasses[] = {
    u"CAnswerPlan", u"CBusyLamp",    u"CCueList",      u"CDigitBuffer", u"CExtension",
    u"CFolderTree", u"CGroupMember", u"CHoldMusic",    u"CInboxWatch",  u"CJitterMeter",
    u"CKeyMap",     u"CLineState",   u"CMediaFrame",   u"CNightTable",  u"COperatorSeat",
    u"CPagingJob",  u"CQueueEntry",  u"CRetryPolicy",  u"CSilenceTrim", u"CTransferLeg",
    u"CUserRecord", u"CVolumeCurve", u"CWakeSchedule", u"CZoneClock",   u"CSiège",
};

constexpr Word kMethods[] = {
    u"Advance", u"Apply",  u"Attach", u"Begin",  u"Check",  u"Detach", u"Expire", u"Flush",
    u"Merge",   u"Notify", u"Parse",  u"Refill", u"Resume", u"Store",  u"Tick",   u"Verify",
};

constexpr Word kStates[] = {
    u"Alerting", u"Bridged", u"Cleared", u"Dialling", u"Held", u"Parked", u"Seized", u"Waiting",
};

// %n number, %d one or two digits, %x eight hex digits, %c class, %m method, %s state, %i call id.
constexpr Word kSentences[] = {
    u"%c::%m entered with handle 0x%x on port %d, state %s, depth %d",
    u"%c::%m left after %n ms with result 0x%x; %d references remain, next call %i",
    u"Port %d went from %s to %s while %n bytes of audio were still waiting to be played",
    u"Extension %n answered call %i after %d rings; the greeting had %n ms left and was stopped",
    u"Timer 0x%x of %c expired, interval %n ms, late by %d ms; restarted, %n expiries so far",
    u"Read %n entries from the directory in %d ms, %n of them changed since the last pass at 0x%x",
    u"Digit buffer of port %d holds \"%n#\"; plan entry %d matches, transfer to %n follows",
    u"Retry %d of 5 for message 0x%x to mailbox %n: store is busy, waiting %n ms before the next",
    u"Queue %d has %n entries, oldest waits %n s; %d seats are free, %d are on a break",
    u"%c::%m: unexpected state %s for call %i, request 0x%x is dropped",
    u"Lamp of extension %n switched on, %d new messages, %n kept, quota %d percent used",
    u"Connection to host node%d.example on port %n closed by peer after %n bytes, code 0x%x",
    u"Tone detector: %n Hz, level -%d dB, for %n ms, taken for the end of a fax on port %d",
    u"Wrote %n pages of the index in %n ms, cache 0x%x, hit rate %d percent, free list has %n",
    u"Call %i parked in slot %d by %n, music source %d, reminder after %n ms",
    u"Configuration key \\Lines\\%d\\Group changed from %n to %n by user 0x%x, reload in %d s",
    u"Worker %d took job 0x%x of kind %d from the spool; %n jobs remain, longest has %n pages",
    u"Heartbeat %n answered by callhost in %d ms, drift %d ms, sequence 0x%x, missed so far %d",
};

constexpr Word kForeignSentences[] = {
    u"Gruß für Nebenstelle %n übernommen, Länge %d s, Größe %n Bytes, Schlüssel 0x%x",
    u"Requête de l’opératrice %n annulée après %d s, état précédent « %s », appel %i",
    u"El buzón %n está lleno: %d mensajes, el más antiguo de hace %d días; señal enviada a %i",
    u"内線 %n の留守番電話に新しい伝言があります（%d 件）。呼び出し %i、ハンドル 0x%x",
    u"Вызов %i поставлен в очередь %d, перед ним %n, ожидание около %n с",
    u"Text message from %n: \"on my way 🚗, back in %d minutes 👍\", call %i, handle 0x%x",
};

constexpr Word kClauses[] = {
    u"call %i",           u"took %n ms",      u"thread 0x%x",   u"state %s",
    u"port %d, depth %d", u"next step is %m", u"%d of %n done", u"asked for by %c",
};

constexpr Word kNotes[] = {
    u"ask the desk about this", u"same as yesterday", u"here it starts", u"vérifié ✓",
    u"two minutes late?",
};

void appendNumber(std::uint32_t number, std::u16string& text) {
    char16_t digits[10];
    std::size_t count = 0;
    do {
        digits[count++] = static_cast<char16_t>(u'0' + number % 10);
        number /= 10;
    } while (number != 0);
    while (count > 0) text.push_back(digits[--count]);
}

void appendHex(std::uint32_t number, unsigned digits, std::u16string& text) {
    while (digits-- > 0) text.push_back(u"0123456789ABCDEF"[(number >> (4 * digits)) & 0xF]);
}

std::u16string makeCallId(Random& random) {
    std::u16string text;
    appendHex(random.below(0x10000), 4, text);
    text.push_back(u'-');
    appendHex(random.below(0x1000000), 8, text);
    return text;
}

template <std::size_t N>
Word pick(Random& random, const Word (&words)[N]) {
    return random.pick(std::span<const Word>{words});
}

/// Cuts at `length`, but not between the halves of one character.
void cut(std::u16string& text, std::size_t length) {
    if (length == 0 || text.size() <= length) return;
    if (text[length] >= 0xDC00 && text[length] < 0xE000) --length;
    text.resize(length);
}

}  // namespace

std::u16string TraceOrigin::key() const {
    std::u16string text = component + u'_' + process + u'_';
    appendNumber(static_cast<std::uint32_t>(level), text);
    return text + u'_' + source;
}

TraceGenerator::TraceGenerator(const TraceOptions& options)
    : options_{options}, random_{options.seed}, second_{kFirstSecond} {
    makeOrigins();
}

bool TraceGenerator::next(Trace& trace) {
    if (made_ == options_.rows) return false;
    stepTime();
    // Now and then a slow process hands its line in late.
    const std::int64_t late = random_.oneIn(30) ? random_.below(90) : 0;
    trace.date.days = static_cast<double>(second_ - late) / 86400;
    trace.origin = pickOrigin();
    trace.number = static_cast<std::int32_t>(1000 + made_);
    trace.port.reset();
    if (!random_.oneIn(8)) trace.port = static_cast<std::int32_t>(random_.between(1, 96));
    trace.callId.reset();
    if (!random_.oneIn(3)) trace.callId = makeCallId(random_);
    trace.text.clear();
    appendText(trace.text);
    cut(trace.text, options_.textLength);
    trace.highlight = random_.oneIn(200);
    trace.note.reset();
    if (random_.oneIn(500)) trace.note = pick(random_, kNotes);
    ++made_;
    return true;
}

/// Walks through the lists with steps that have no factor in common with their lengths, so that
/// every name occurs and no combination does twice; few are frequent, most are rare.
void TraceGenerator::makeOrigins() {
    std::uint32_t sum = 0;
    const std::size_t start = random_.below(1000);
    for (std::size_t i = 0; i < kOriginCount; ++i) {
        const std::size_t n = start + i;
        TraceOrigin origin;
        origin.component = kComponents[n * 7 % std::size(kComponents)];
        origin.process = kProcesses[n * 5 % std::size(kProcesses)];
        origin.level = static_cast<std::int16_t>(n * 11 % 31);
        origin.source = kClasses[n * 3 % std::size(kClasses)];
        if (i % 3 == 0) origin.source.append(u"::").append(kMethods[n % std::size(kMethods)]);
        origins_.push_back(std::move(origin));
        sum += static_cast<std::uint32_t>(2000 / (i + 2) + 1);
        weightsUpTo_.push_back(sum);
    }
}

void TraceGenerator::stepTime() {
    if (random_.oneIn(4)) second_ += random_.below(3);
}

std::size_t TraceGenerator::pickOrigin() {
    const std::uint32_t mark = random_.below(weightsUpTo_.back());
    const auto place = std::upper_bound(weightsUpTo_.begin(), weightsUpTo_.end(), mark);
    return static_cast<std::size_t>(place - weightsUpTo_.begin());
}

void TraceGenerator::appendText(std::u16string& text) {
    appendLine(text);
    std::size_t length = 0;
    if (random_.oneIn(25)) length = text.size() * random_.between(2, 6);
    if (random_.oneIn(5000)) length = kLongText + random_.below(3 * kLongText);
    while (text.size() < length) {
        text.append(u"\r\n");
        appendLine(text);
    }
}

void TraceGenerator::appendLine(std::u16string& text) {
    const std::size_t least = text.size() + random_.between(80, 140);
    appendPattern(random_.oneIn(40) ? pick(random_, kForeignSentences) : pick(random_, kSentences),
                  text);
    while (text.size() < least) {
        text.append(u"; ");
        appendPattern(pick(random_, kClauses), text);
    }
}

void TraceGenerator::appendPattern(std::u16string_view pattern, std::u16string& text) {
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == u'%') {
            appendPlaceholder(pattern[++i], text);
        } else {
            text.push_back(pattern[i]);
        }
    }
}

void TraceGenerator::appendPlaceholder(char16_t kind, std::u16string& text) {
    switch (kind) {
        case u'n':
            return appendNumber(random_.between(100, 9999), text);
        case u'd':
            return appendNumber(random_.below(100), text);
        case u'x':
            return appendHex(random_.below(0x10000000), 8, text);
        case u'c':
            text.append(pick(random_, kClasses));
            return;
        case u'm':
            text.append(pick(random_, kMethods));
            return;
        case u's':
            text.append(pick(random_, kStates));
            return;
        case u'i':
            text.append(makeCallId(random_));
            return;
    }
}

}  // namespace traces
