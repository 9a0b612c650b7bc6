#include "check/document_rules.h"
#include "check/tag_check.h"
#include "text/names.h"
#include "text/words.h"
#include "vhdl/static_expression.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// The words of C. Those of C++ alone are refused as soon as a C++ source includes the header.
constexpr QLatin1StringView kCWords[] = {
    "_Alignas"_L1,   "_Alignof"_L1,  "_Atomic"_L1,        "_Bool"_L1,         "_Complex"_L1, "_Generic"_L1,
    "_Imaginary"_L1, "_Noreturn"_L1, "_Static_assert"_L1, "_Thread_local"_L1, "auto"_L1,     "break"_L1,
    "case"_L1,       "char"_L1,      "const"_L1,          "continue"_L1,      "default"_L1,  "do"_L1,
    "double"_L1,     "else"_L1,      "enum"_L1,           "extern"_L1,        "float"_L1,    "for"_L1,
    "goto"_L1,       "if"_L1,        "inline"_L1,         "int"_L1,           "long"_L1,     "register"_L1,
    "restrict"_L1,   "return"_L1,    "short"_L1,          "signed"_L1,        "sizeof"_L1,   "static"_L1,
    "struct"_L1,     "switch"_L1,    "typedef"_L1,        "union"_L1,         "unsigned"_L1, "void"_L1,
    "volatile"_L1,   "while"_L1};
constexpr QLatin1StringView kCppWords[] = {"alignas"_L1,
                                           "alignof"_L1,
                                           "and"_L1,
                                           "and_eq"_L1,
                                           "asm"_L1,
                                           "bitand"_L1,
                                           "bitor"_L1,
                                           "bool"_L1,
                                           "catch"_L1,
                                           "char16_t"_L1,
                                           "char32_t"_L1,
                                           "char8_t"_L1,
                                           "class"_L1,
                                           "co_await"_L1,
                                           "co_return"_L1,
                                           "co_yield"_L1,
                                           "compl"_L1,
                                           "concept"_L1,
                                           "const_cast"_L1,
                                           "consteval"_L1,
                                           "constexpr"_L1,
                                           "constinit"_L1,
                                           "decltype"_L1,
                                           "delete"_L1,
                                           "dynamic_cast"_L1,
                                           "explicit"_L1,
                                           "export"_L1,
                                           "false"_L1,
                                           "friend"_L1,
                                           "mutable"_L1,
                                           "namespace"_L1,
                                           "new"_L1,
                                           "noexcept"_L1,
                                           "not"_L1,
                                           "not_eq"_L1,
                                           "nullptr"_L1,
                                           "operator"_L1,
                                           "or"_L1,
                                           "or_eq"_L1,
                                           "private"_L1,
                                           "protected"_L1,
                                           "public"_L1,
                                           "reinterpret_cast"_L1,
                                           "requires"_L1,
                                           "static_assert"_L1,
                                           "static_cast"_L1,
                                           "template"_L1,
                                           "this"_L1,
                                           "thread_local"_L1,
                                           "throw"_L1,
                                           "true"_L1,
                                           "try"_L1,
                                           "typeid"_L1,
                                           "typename"_L1,
                                           "using"_L1,
                                           "virtual"_L1,
                                           "wchar_t"_L1,
                                           "xor"_L1,
                                           "xor_eq"_L1};

template <std::size_t size>
bool isOneOf(const QLatin1StringView (&words)[size], QStringView name)
{
    return std::ranges::any_of(words, [&](QLatin1StringView word) { return isWord(name, word); });
}

/// How a name stands in what is generated, which decides on what breaks.
enum class NameUse {
    Member,        ///< of a C structure, in its own case
    Constant,      ///< a macro and a constant of a package, in upper case
    Subtype,       ///< of a package alone
    UpperCaseName, ///< begins a macro or a type of C, in upper case, so that it is no reserved word
    LaterPart,     ///< stands behind other letters
};

NameUse useOf(const TagInContext &at)
{
    switch (at.kind()) {
    case TagKind::Register:
    case TagKind::Integer:
    case TagKind::Struct:
    case TagKind::Memory:
    case TagKind::Pointer:
    case TagKind::MemberInstance:
        // The one element of an alias has the alias's name.
        return at.parent && at.parent->kind() == TagKind::Alias ? NameUse::LaterPart : NameUse::Member;
    case TagKind::Half:
        return NameUse::Member;
    case TagKind::Field:
        return at.enclosing(TagKind::Alias) && !at.enclosing(TagKind::Struct) ? NameUse::Member : NameUse::LaterPart;
    case TagKind::Variable:
    case TagKind::EnumEntry:
    case TagKind::EnumBound:
        return NameUse::Constant;
    case TagKind::Range:
        return NameUse::Subtype;
    case TagKind::Type:
    case TagKind::Alias:
    case TagKind::Enum:
        return NameUse::UpperCaseName;
    default:
        return NameUse::LaterPart;
    }
}

/// Nothing when no language reserves \a name where it stands.
QString reservingLanguage(NameUse use, QStringView name)
{
    const bool mayBeOfC = !name.isEmpty() && (name.front().isLower() || name.front() == u'_');
    if (use == NameUse::Member && mayBeOfC)
        return isOneOf(kCWords, name) ? u"C"_s : isOneOf(kCppWords, name) ? u"C++"_s : QString();
    if (use == NameUse::Constant || use == NameUse::Subtype) {
        const bool isShaped = !name.startsWith(u'_') && !name.endsWith(u'_') && !name.contains("__"_L1);
        return isShaped && !isDeclarableName(name.toString()) ? u"VHDL"_s : QString();
    }
    return {};
}

QString controlWords(QChar c)
{
    return "a control character, U+"_L1 + QString::number(c.unicode(), 16).toUpper().rightJustified(4, u'0');
}

/// What a name at the top of a description holds that ends texts, tags or lines of what is generated; empty for
/// nothing.
QString breakingPart(const TagInContext &at, QStringView name)
{
    const bool isAtTop =
        at.kind() == TagKind::PlacedInstance || at.kind() == TagKind::Type || at.kind() == TagKind::Alias;
    if (!isAtTop)
        return {};
    for (const QChar c : name) {
        if (c == u'"' || c == u'\'')
            return u"a quote"_s;
        if (c == u'\\')
            return u"a backslash"_s;
        if (c == u'<' || c == u'>')
            return u"an angle bracket"_s;
        if (c.category() == QChar::Other_Control)
            return controlWords(c);
    }
    return {};
}

/// The same of a file's name, which stands between quotes behind #include.
QString breakingPartOfFile(QStringView file)
{
    for (const QChar c : file) {
        if (c == u'"')
            return u"a quote"_s;
        if (c.category() == QChar::Other_Control)
            return controlWords(c);
    }
    return {};
}

} // namespace

void checkName(const TagInContext &at, ValueKind kind, QStringView name, const DocumentTeller &teller)
{
    const NameUse use = useOf(at);
    const auto refuse = [&](const QString &reason) { teller.tell(rules::illegalName, at, {shownText(name), reason}); };
    if (name.isEmpty()) // of which another rule tells, or the loader
        return;
    if (!std::ranges::all_of(name, isNameCharacter)) {
        const QString legal = regularizeVariableName(name.toString());
        if (const QString part = breakingPart(at, name); !part.isEmpty())
            teller.tell(rules::unusableName, at, {shownText(name), part});
        else if (kind == ValueKind::RawName)
            refuse(u"names have letters, digits and underscores alone"_s);
        else
            teller.tell(rules::changedName, at, {shownText(name), shownText(legal)});
        return;
    }
    if (name.front().isDigit() && use != NameUse::LaterPart) {
        refuse(u"it begins with a digit"_s);
        return;
    }
    if (const QString language = reservingLanguage(use, name); !language.isEmpty())
        teller.tell(rules::reservedWord, at, {name.toString(), language});
}

void checkFileName(const TagInContext &at, QStringView file, const DocumentTeller &teller)
{
    if (const QString part = breakingPartOfFile(file); !part.isEmpty())
        teller.tell(rules::unusableName, at, {shownText(file), part});
}

} // namespace veldmap
