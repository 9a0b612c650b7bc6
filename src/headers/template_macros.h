#pragma once

#include <QHash>
#include <QString>

class VMXMLElement;

namespace veldmap {

/// The bitfield macros of the template \a element, under its own name.
QString templateMacros(const VMXMLElement &element);

/// Keeps the macros of templates as long as it lives. The C and the assembly header of a file carry the same ones; who
/// makes both, from a tree that does not change meanwhile, has them made once.
class TemplateMacrosCache {
public:
    TemplateMacrosCache();
    TemplateMacrosCache(const TemplateMacrosCache &) = delete;
    TemplateMacrosCache &operator=(const TemplateMacrosCache &) = delete;
    ~TemplateMacrosCache();

private:
    friend QString templateMacros(const VMXMLElement &element);

    QHash<const VMXMLElement *, QString> m_macros;
    TemplateMacrosCache *m_outer;
};

} // namespace veldmap
