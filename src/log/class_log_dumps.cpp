// How the log shows records, dictionaries and commands.
#include "engine/ado/recordset.h"
#include "src/log/class_log.h"
#include "src/log/procedure.h"

namespace {

constexpr std::size_t kRuleWidth = 80;
constexpr std::size_t kFieldWidth = 32;
constexpr std::size_t kKeyWidth = 33;
constexpr std::size_t kParameterWidth = 31;
constexpr std::u16string_view kGap = u"    ";

const std::u16string& stars() {
    static const std::u16string rule(kRuleWidth, u'*');
    return rule;
}

}  // namespace

void classLog::dumpRecordsets(ado::Recordset& recordset, std::u16string_view label) {
    runProcedure(u"[classLog]dumpRecordsets", {.log = this}, [&](Procedure& procedure) {
        procedure.step([&] {
            if (recordset.state() == ado::adStateClosed || recordset.bof() || recordset.eof()) {
                return;
            }
            log(stars(), kInfo, label);
            log(u"Object Recordset Dump", kInfo, label);
            log(stars(), kInfo, label);
            const std::u16string rule(kRuleWidth, u'-');
            const ado::Fields fields = recordset.fields();
            for (; !recordset.eof(); recordset.moveNext()) {
                for (std::size_t i = 0; i < fields.count(); ++i) {
                    log(logformat::alignedLeft(fields[i].name(), kFieldWidth) +
                            std::u16string{kGap} + fields[i].text(),
                        kInfo, label);
                }
                log(rule, kInfo, label);
            }
        });
    });
}

void classLog::dumpDictionary(const std::map<std::u16string, std::u16string>& dictionary,
                              std::u16string_view label) {
    for (const auto& [key, item] : dictionary) {
        log(logformat::alignedRight(key, kKeyWidth) + std::u16string{kGap} + item, kInfo, label);
    }
    log(stars(), kInfo, label);
}

void classLog::dumpCommandObject(const CommandObject& command, std::u16string_view label) {
    log(stars(), kVerInfo, label);
    log(u"Command Object Dump: " + command.text, kVerInfo, label);
    log(stars(), kVerInfo, label);
    for (const CommandObject::Parameter& parameter : command.parameters) {
        log(logformat::alignedLeft(parameter.name, kParameterWidth) + std::u16string{kGap} +
                parameter.value,
            kVerInfo, label);
    }
    log(stars(), kVerInfo, label);
}
