#pragma once

#include <veldmap/veldmap_export.h>

#include <QHash>
#include <QString>

#include <optional>

namespace veldmap {

/// The parameters of an IP-XACT document by the ids under which expressions name them, and the values that they have.
class VELDMAP_EXPORT IpxactParameters {
public:
    /// Takes the expression \a text for \a id; the first of an id counts.
    void add(const QString &id, const QString &text);

    /// The value of \a expression: numbers as SystemVerilog writes them (16, 'h10, 32'hFF, 8'b1010_0000), as older
    /// documents do (0x10, #10, 4K), ids, the operators of SystemVerilog on integers, $clog2, $pow, $min, $max and
    /// $abs. Nothing when it has none: it is not well formed, names what is not there, goes in a circle, or divides by
    /// 0.
    std::optional<qint64> valueOf(QStringView expression);

private:
    friend class IpxactEvaluator;
    struct Parameter {
        QString text;
        bool isOpen = false; ///< it is being evaluated
        bool isKnown = false;
        std::optional<qint64> value = {};
    };
    std::optional<qint64> valueOfParameter(const QString &id);

    QHash<QString, Parameter> m_parameters;
    int m_depth = 0; // of brackets and parameters, while an expression is evaluated
};

} // namespace veldmap
