#include "access/path_segments.h"
#include "model/memory_map.h"
#include "model/visit.h"

#include <algorithm>
#include <deque>
#include <span>

using namespace Qt::StringLiterals;
using veldmap::Segments;

// $top.table[3].val: a path is what getPath writes. Each element answers for its own name, the first segment, and
// passes what follows to those inside it; the first that answers wins. Members may share a name, so one that leads
// nowhere is followed by the next of its name.

namespace {

/// A walk along one path. Chains of pointers may be followed for thousands of segments, so what is left to ask is kept
/// in a list and not in calls inside one another.
class PathWalk {
public:
    /// The answer of \a element to a path that goes on with \a name and \a rest, or null.
    VMXMLElement *find(VMXMLElement &element, QStringView name, Segments rest)
    {
        m_open.clear();
        m_names.clear();
        VMXMLElement *found = ask(element, name, rest);
        while (!found && !m_open.empty()) {
            Branch &branch = m_open.back();
            VMXMLElement &candidate = *branch.candidates.front();
            const QStringView itsName = branch.name;
            const Segments itsRest = branch.rest;
            branch.candidates = branch.candidates.subspan(1);
            if (branch.candidates.empty())
                m_open.pop_back();
            found = ask(candidate, itsName, itsRest);
        }
        return found;
    }

private:
    using Candidates = std::span<const std::unique_ptr<VMXMLElement>>;

    /// Elements that are still to be asked, one after the other.
    struct Branch {
        Candidates candidates; ///< one at least
        QStringView name;
        Segments rest;
    };

    /// The answer of \a element itself; null when it has none, or when it has opened a branch for those inside it.
    VMXMLElement *ask(VMXMLElement &element, QStringView name, Segments rest)
    {
        return veldmap::visit(element, [&](auto &it) { return answerOf(it, name, rest); });
    }

    /// An array looks no further when it knows its name, and its members know theirs.
    VMXMLElement *answerOf(VMArray &array, QStringView name, Segments rest)
    {
        return array.getName() == name ? &array : open(array.memberList, name, rest);
    }

    VMXMLElement *answerOf(VMStruct &structure, QStringView name, Segments rest)
    {
        if (structure.getName() != name)
            return nullptr;
        return rest.empty() ? &structure : open(structure.memberList, rest.front(), rest.subspan(1));
    }

    /// A valuable looks at one segment behind its own and ignores the others.
    VMXMLElement *answerOf(VMValuable &valuable, QStringView name, Segments rest)
    {
        if (valuable.getName() != name)
            return nullptr;
        if (rest.empty())
            return &valuable;
        const auto isNamed = [&](const auto &field) { return field->getName() == rest.front(); };
        const auto found = std::ranges::find_if(valuable.bitFields, isNamed);
        return found == valuable.bitFields.end() ? nullptr : found->get();
    }

    /// Behind a pointer ">" is what it points to, ">[3]" a member of that. No path leads to the bitfields of a pointer.
    VMXMLElement *answerOf(VMPointer &pointer, QStringView name, Segments rest)
    {
        if (pointer.getName() != name)
            return nullptr;
        if (rest.empty())
            return &pointer;
        const QStringView step = rest.front();
        const bool isElement = step == u'>';
        if (!isElement && !step.startsWith(">["_L1))
            return nullptr;
        pointer.allocatePointedElement();
        VMXMLElement *pointed = pointer.pointedElement.get();
        if (!pointed || (isElement && rest.size() == 1))
            return pointed;
        // The pointed element knows itself by its own name, and its members by that name and an index.
        QStringView itsName = pointed->getName();
        if (!isElement)
            itsName = m_names.emplace_back(pointed->getName() + step.sliced(1).toString());
        return open({&pointer.pointedElement, 1}, itsName, rest.subspan(1));
    }

    /// What has nothing inside answers for its own name alone.
    VMXMLElement *answerOf(VMXMLElement &element, QStringView name, Segments rest)
    {
        return rest.empty() && element.getName() == name ? &element : nullptr;
    }

    VMXMLElement *open(Candidates candidates, QStringView name, Segments rest)
    {
        if (!candidates.empty())
            m_open.push_back({candidates, name, rest});
        return nullptr;
    }

    std::vector<Branch> m_open;  // the last is asked first
    std::deque<QString> m_names; // that branches look for and no element bears
};

} // namespace

VMXMLElement *VMMemoryMap::getElementFromPath(const QString &path) const
{
    const QList<QStringView> segments = veldmap::segmentsOf(path);
    if (segments.isEmpty() || !segments.front().startsWith(u'$'))
        return nullptr;
    const QStringView name = segments.front().sliced(1);
    const Segments rest = Segments(segments).subspan(1);
    PathWalk walk;
    for (const VMRootArchive *root : {chipRootArchive, softRootArchive}) {
        if (!root)
            continue;
        for (const auto &instance : root->getInstanciatedTemplates()) {
            // A path of one segment is that of an instance itself.
            VMXMLElement *found = rest.empty() ? (instance->getPath() == path ? instance.get() : nullptr)
                                               : walk.find(*instance, name, rest);
            if (found)
                return found;
        }
    }
    return nullptr;
}

VMXMLElement *VMXMLElement::getElementFromPathTokens(const QStringList &tokens)
{
    if (tokens.isEmpty())
        return nullptr;
    const QList<QStringView> segments = veldmap::segmentsOf(tokens);
    return PathWalk().find(*this, segments.front(), Segments(segments).subspan(1));
}
