# Reads the comments that open public headers.
#
#   awk -v root=FOLDER -v context=FILE -f examples.awk HEADER...      code with all examples
#   awk -v root=FOLDER -v report=1 -f examples.awk HEADER...          what the openings lack
#
# Paths are relative to FOLDER.
#
# An example is the lines of the opening comment that stand three blanks or more behind its //. A
# block of such lines that begins with "offset" is a layout table instead. "..." stands for code that
# does not matter. Each example becomes a member function of a struct, or its members if it declares a class
# or a function. The names that it uses without declaring them are members of its base, which the
# file CONTEXT declares: of the structs there the one that is named most precisely for the header,
# as engine_jet_pager_h, engine_jet or engine for engine/jet/pager.h.
#
# A thread rule is a sentence that says "any thread", "one thread" or "the user-interface thread".
# A layout table stands for both in folders named format, whose headers describe bytes.

function fail(message) {
    print "examples.awk: " message >"/dev/stderr"
    failed = 1
    exit 1
}

function identifier(path) {
    gsub(/[^A-Za-z0-9]/, "_", path)
    return path
}

# The struct in the context that stands for what surrounds the example.
function surroundings(header, name) {
    name = identifier(header)
    while (!(name in contexts)) {
        if (!sub(/_[^_]*$/, "", name)) fail(context " has no struct for " header)
    }
    return name
}

function withoutEllipsis(code) {
    if (code ~ /^ *\.\.\.$/) return ""
    sub(/ \.\.\.$/, " ;", code)
    gsub(/ \.\.\. /, " ; ", code)
    return code
}

function declares() {
    return code[1] !~ /^(if|for|while|switch|try|do|\{)/ && code[1] ~ /\{$/ && code[codeLines] ~ /^};?$/
}

function printExample(header, line) {
    print "namespace " scope (scope == "" ? "" : "::") "example_of_" identifier(header) " {"
    print "struct Example : examples::" surroundings(header) " {"
    if (!declares()) print "auto run() {"
    print "#line " firstLine " \"" header "\""
    for (line = 1; line <= codeLines; line++) print withoutEllipsis(code[line])
    if (!declares()) print "}"
    print "};"
    print "}"
}

function printFindings(header) {
    if (prose !~ /[^ ]/) print header ": no purpose"
    if (hasTable && header ~ /\/format\//) return
    if (!codeLines) print header ": no example"
    if (prose !~ /[Aa]ny thread|[Oo]ne thread|user-interface thread/) print header ": no thread rule"
}

function finishHeader() {
    if (header == "") return
    while (codeLines && code[codeLines] == "") codeLines--
    if (report) printFindings(header)
    else if (codeLines) printExample(header)
}

function startHeader() {
    header = substr(FILENAME, length(root) + 2)
    opening = 1
    inTable = inBlock = hasTable = codeLines = 0
    prose = scope = ""
}

# The lines of all blocks of code make one example, with the places of their lines.
function addCode(text) {
    if (!codeLines) firstLine = FNR
    while (codeLines && firstLine + codeLines < FNR) code[++codeLines] = ""
    code[++codeLines] = text
}

BEGIN {
    for (i = 1; i < ARGC; i++) {
        if (!report) print "#include \"" ARGV[i] "\""
        ARGV[i] = root "/" ARGV[i]
    }
    if (!report) {
        print "#include \"" context "\""
        while ((getline line <(root "/" context)) > 0) {
            if (line ~ /^struct /) {
                split(line, words, /[ :{]+/)
                contexts[words[2]] = 1
            }
        }
    }
}

FNR == 1 {
    finishHeader()
    startHeader()
}

/^#pragma once/ { opening = 0 }

opening && /^\/\/   / {
    text = substr($0, 6)
    if (!inBlock) inTable = text ~ /^offset/
    inBlock = 1
    if (inTable) hasTable = 1
    else addCode(text)
    next
}

opening {
    inBlock = 0
    prose = prose " " substr($0, 4)
}

scope == "" && /^namespace [a-zA-Z:]+ \{$/ { scope = $2 }

END { if (!failed) finishHeader() }
