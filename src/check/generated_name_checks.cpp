#include "check/macro_names.h"
#include "check/tree_groups.h"
#include "check/tree_rules.h"
#include "check/type_names.h"
#include "headers/c_names.h"

#include <algorithm>
#include <tuple>
#include <unordered_map>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

bool isEnumType(const VMXMLElement &type)
{
    const auto *valuable = elementCast<VMValuable>(&type);
    return valuable && valuable->enumTemplate;
}

/// "1 macro", "2 macros".
QString countText(int count)
{
    return count == 1 ? u"1 macro"_s : QString::number(count) + " macros"_L1;
}

/// Where the type that holds \a element declares it: for what stands in an inner instance that instance.
Place placeInType(const VMXMLElement &element)
{
    const VMXMLElement *outermost = &element;
    for (const VMXMLElement *at = &element; at && at->parent && at->parent->getType() != VMXMLElement::XML_ARCHIVE;
         at = at->parent) {
        if (isCopyOfType(*at))
            outermost = at;
    }
    return outermost->source.place();
}

/// "soc.xml:12".
QString lineText(const Place &place)
{
    return place.file.section(u'/', -1) + u':' + QString::number(place.line);
}

/// A second place, and what is there.
struct Other {
    SourcePlace source = {};
    QString what = {};
};

/// All names that the headers of one root define, which whoever includes the root's header gets together.
class GeneratedNames final : public GeneratedNameChecks {
public:
    GeneratedNames(const VMRootArchive &root, Sink &sink) : m_root(root), m_sink(sink)
    {
        for (const VMXMLArchive *archive : root.xmlArchives) {
            for (const auto &type : archive->templates) {
                const VMXMLElement *&known = m_types[type->typedefName.toUpper()];
                known = known ? known : type.get();
            }
        }
        for (const auto &instance : root.instances) {
            m_instanceMacros.insert("REG_"_L1 + instance->getName().toUpper() + "_BASE"_L1, instance.get());
            m_instantiated.insert(instance->typedefName);
        }
    }

    /// Shares what \a other knows of the root.
    GeneratedNames(const GeneratedNames &other, Sink &sink)
        : m_root(other.m_root), m_sink(sink), m_types(other.m_types), m_variables(other.m_variables),
          m_instanceMacros(other.m_instanceMacros), m_instantiated(other.m_instantiated)
    {
    }

    std::unique_ptr<TypeChecks> another(Sink &sink) const override
    {
        return std::make_unique<GeneratedNames>(*this, sink);
    }

    /// Looks at what is beside the types, in front of which this has to be known.
    void checkArchives()
    {
        checkFiles();
        for (const VMXMLArchive *archive : m_root.xmlArchives)
            checkVariables(*archive);
    }

    void check(const VMXMLArchive &archive, const VMXMLElement &type) override
    {
        checkTypeName(type);
        if (isEnumType(type))
            return;
        checkMacros(type);
        checkMacrosOfShorterTypes(type);
        if (archive.generateAsm && m_instantiated.contains(type.typedefName))
            checkBase(type);
        visitDeclared(type, Overloads{[this](const VMStruct &structure) {
                                          if (!isCopyOfType(structure))
                                              checkMembers(structure);
                                      },
                                      [](const VMXMLElement &) {}});
    }

private:
    using Macros = QHash<QString, FieldMacro>;

    void checkFiles()
    {
        QHash<QString, const VMXMLArchive *> guards;
        for (const VMXMLArchive *archive : m_root.xmlArchives) {
            const VMXMLArchive *&first = guards[archive->getBaseName().toUpper()];
            const auto tagOf = [](const VMXMLArchive &of) {
                return std::tuple(of.source.file.name(), of.source.line, of.source.column);
            };
            if (first && tagOf(*first) != tagOf(*archive)) // a file that is read twice has a rule of its own
                take(lint::guardTwice, archive->source.place(),
                     {archive->relativeFileName, first->relativeFileName,
                      u'_' + archive->getBaseName().toUpper() + "_H_"_L1},
                     {first->source, u"the other file"_s});
            first = first ? first : archive;
            if (archive->generateAsm)
                checkAssemblyIncludes(*archive);
        }
    }

    /// The include of an archive is found again by the header that it names.
    void checkAssemblyIncludes(const VMXMLArchive &archive)
    {
        QHash<QString, const VMXMLArchive *> withoutAssembly;
        for (const VMXMLArchive *included : archive.includedArchives) {
            if (!included->generateAsm)
                withoutAssembly.insert(included->getBaseName(), included);
        }
        if (withoutAssembly.isEmpty())
            return;
        const auto check = [&](const QString &headerName, const SourcePlace &source) {
            const QString base = headerName.endsWith(".h"_L1) ? headerName.chopped(2) : headerName;
            if (const VMXMLArchive *included = withoutAssembly.value(base))
                take(lint::assemblyMissing, source.place(), {archive.relativeFileName, base + "_asm.h"_L1},
                     {included->source, u"the file without"_s});
        };
        for (const VMXMLInclude &include : archive.includes) {
            check(include.headerName, include.source);
            for (const VMXMLIncludeCondition &alternative : include.conditions)
                check(alternative.headerName, alternative.source);
        }
    }

    void checkVariables(const VMXMLArchive &archive)
    {
        for (const VMIntVar &variable : *archive.variables) {
            if (variable.isRange || isSpacer(variable))
                continue;
            const QString name = variable.name.toUpper();
            const VMIntVar *&first = m_variables[name];
            // What the preprocessor defines twice alike does no harm.
            const bool isHarmless = first && !first->ownerEnum && !variable.ownerEnum &&
                                    first->leftExpression.toUpper() == variable.leftExpression.toUpper();
            if (first && !isHarmless)
                take(lint::variableNameTwice, variable.source.place(),
                     {variable.name, QString::number(variable.leftValue), lineText(first->source.place()),
                      QString::number(first->leftValue)},
                     {first->source, u"first declared here"_s});
            else if (const VMXMLElement *instance = m_instanceMacros.value(name))
                take(lint::variableLikeMacro, variable.source.place(), {variable.name, u"an instance"_s},
                     {instance->source, u"the instance"_s});
            else if (const FieldMacro *macro = findFieldMacro(name))
                take(lint::variableLikeMacro, variable.source.place(),
                     {variable.name, u'\'' + declaredPath(*macro->owner) + u'\''},
                     {macro->owner->source, u"the register"_s});
            first = first ? first : &variable;
        }
    }

    void checkTypeName(const VMXMLElement &type)
    {
        const QString &name = type.typedefName;
        const QString upper = name.toUpper();
        const VMXMLElement *first = m_types.value(upper);
        if (first != &type)
            take(lint::typeNameTwice, type.source.place(), {name, first->typedefName, lineText(first->source.place())},
                 {first->source, u"first declared here"_s});
        const auto *structure = elementCast<VMStruct>(&type);
        const bool isModule = structure && !structure->isTypedef && structure->declaredType.isEmpty();
        const QString inC = isModule ? "HWP_"_L1 + upper + "_T"_L1 : ESDRTypeConvert(name);
        if (upper.endsWith("_T"_L1) && inC.endsWith("_T_T"_L1))
            take(lint::typeSuffixTwice, type.source.place(), {name, inC});
    }

    /// Of the macros of one name the headers define the first and comment out the others.
    void checkMacros(const VMXMLElement &type)
    {
        m_known.clear();
        const VMValuable *owner = nullptr; // of the first that is left out
        const VMValuable *taker = nullptr; // of its name
        QString first;
        int count = 0;
        forEachMacro(type, [&](const MacroName &name, const FieldMacro &macro) {
            const FieldMacro *taken = m_known.add(name, macro);
            if (taken && !taken->hasValueOf(macro) && count++ == 0) {
                owner = macro.owner;
                taker = taken->owner;
                first = name.text();
            }
        });
        if (count > 0)
            take(lint::macroNameTwice, placeInType(*owner),
                 {countText(count), type.typedefName, type.typedefName.toUpper() + u'_' + first, declaredPath(*owner),
                  declaredPath(*taker)},
                 {taker->source, u"the register that takes the name"_s});
    }

    /// The macros of the types "uart" and "uart_tx" can only be alike where the ones of uart go on with "TX_".
    void checkMacrosOfShorterTypes(const VMXMLElement &type)
    {
        const QString upper = type.typedefName.toUpper();
        for (qsizetype end = upper.indexOf(u'_', 1); end != -1; end = upper.indexOf(u'_', end + 1)) {
            const VMXMLElement *shorter = m_types.value(upper.first(end));
            if (!shorter || isEnumType(*shorter) || m_types.value(upper) != &type)
                continue;
            const QString rest = upper.sliced(end + 1) + u'_';
            const Macros &others = macrosOf(*shorter);
            for (auto [name, macro] : macrosOf(type).asKeyValueRange()) {
                const auto other = others.constFind(rest + name);
                if (other != others.cend() && !other->hasValueOf(macro))
                    take(lint::macroOfTwoTypes, placeInType(*macro.owner),
                         {upper + u'_' + name, declaredPath(*macro.owner), declaredPath(*other->owner)},
                         {other->owner->source, u"the other register"_s});
            }
        }
    }

    /// The base address of an instance has two more macros in assembly headers, its halves.
    void checkBase(const VMXMLElement &type)
    {
        const auto *structure = elementCast<VMStruct>(&type);
        if (!structure)
            return;
        for (const auto &member : structure->memberList) {
            const QString name = member->getName().toUpper();
            if (member->isValuable() && (name == "BASE"_L1 || name == "BASE_HI"_L1 || name == "BASE_LO"_L1))
                take(lint::registerNamedBase, member->source.place(), {declaredPath(*member), name});
        }
    }

    void checkMembers(const VMStruct &structure)
    {
        for (const auto &member : structure.memberList) {
            const QString &name = member->getName();
            if (std::ranges::any_of(name, [](QChar c) { return c >= u'a' && c <= u'z'; })) // macros have capitals alone
                continue;
            const VMIntVar *variable = m_variables.value(name);
            const FieldMacro *macro = nullptr;
            QString what;
            SourcePlace other;
            if (variable && !variable->ownerEnum && name == variable->name.toUpper()) {
                what = u"the variable of "_s + lineText(variable->source.place());
                other = variable->source;
            } else if (const VMXMLElement *instance = m_instanceMacros.value(name)) {
                what = u"the base address of an instance"_s;
                other = instance->source;
            } else if ((macro = findFieldMacro(name)) && !macro->hasParameter) {
                what = u"a field of '"_s + declaredPath(*macro->owner) + u'\'';
                other = macro->owner->source;
            }
            if (!what.isEmpty())
                take(lint::memberLikeMacro, member->source.place(), {name, declaredPath(structure), what},
                     {other, u"the macro comes from here"_s});
        }
    }

    /// The macro of that name, which begins with the name of its type, or null.
    const FieldMacro *findFieldMacro(const QString &name)
    {
        for (qsizetype end = name.indexOf(u'_', 1); end != -1; end = name.indexOf(u'_', end + 1)) {
            const VMXMLElement *type = m_types.value(name.first(end));
            if (!type || isEnumType(*type))
                continue;
            const Macros &macros = macrosOf(*type);
            const auto found = macros.constFind(name.sliced(end + 1));
            if (found != macros.cend())
                return &*found;
        }
        return nullptr;
    }

    const Macros &macrosOf(const VMXMLElement &type)
    {
        const auto [place, isNew] = m_macros.try_emplace(&type);
        Macros &macros = place->second;
        if (isNew)
            forEachMacro(type, [&](const MacroName &name, const FieldMacro &macro) {
                const QString text = name.text();
                if (!macros.contains(text))
                    macros.insert(text, macro);
            });
        return macros;
    }

    void take(const LintRule &rule, const Place &place, const QStringList &arguments, const Other &other = {})
    {
        m_sink.take(Finding(rule.rule, place, arguments).withPlace(other.source.place(), other.what));
    }

    const VMRootArchive &m_root;
    Sink &m_sink;
    QHash<QString, const VMXMLElement *> m_types;              // by name in capitals
    QHash<QString, const VMIntVar *> m_variables;              // by name in capitals, the first of each
    QHash<QString, const VMXMLElement *> m_instanceMacros;     // the instances of the macros of their base addresses
    QSet<QString> m_instantiated;                              // types
    MacroTable m_known;                                        // of the type that is being checked
    std::unordered_map<const VMXMLElement *, Macros> m_macros; // its macros stay where they are
};

} // namespace

std::unique_ptr<GeneratedNameChecks> generatedNameChecks(const VMRootArchive &root, Sink &sink)
{
    auto checks = std::make_unique<GeneratedNames>(root, sink);
    checks->checkArchives();
    return checks;
}

} // namespace veldmap
