#pragma once

#include <veldmap/veldmap_export.h>

namespace variant {
class Variant;
}

/// Contexts, which give the parts of an expression their meaning, and the evaluator, which knows its grammar.
namespace cexev {

/// What an expression means: which characters make an identifier, and what identifiers, functions and operators give.
///
/// The base class knows the constant pi, the function sin and the operators. A subclass adds to that by overriding an
/// operation and passing on to the base what it does not know itself.
/// Operations return non-zero for success and 0 for failure, and report nothing further. Names are never null, and
/// no argument of a call may be its result as well. There is no state, so contexts of the base class may be shared.
class VELDMAP_EXPORT CExEvCtx {
public:
    /// What a table row runs: non-zero for success. The number and types of the arguments are as in its signature.
    using Handler = int (*)(int argc, variant::Variant **argv, variant::Variant &result);

    /// One row of a function or operator table.
    struct SFunctionDef {
        const char *name; ///< the function's name or the operator's symbol; null ends a table
        /// A letter for the result, which only documents, and one for each argument: a type letter of a
        /// variant::Variant, '?' for any type, or '*' for one or more further arguments of any types.
        const char *signature;
        const char *description;
        Handler handler;
    };

    static const SFunctionDef m_stdFuncDef[];
    /// The first row that fits a call wins, so rows for certain types stand before the rows for all.
    static const SFunctionDef m_stdOpDef[];

    CExEvCtx();
    virtual ~CExEvCtx();

    /// Whether an identifier may begin with \a c, a byte other than NUL read as unsigned: a letter or '_'.
    virtual int isValidIdentStartChar(int c);
    /// Whether an identifier may go on with \a c: also a digit, '.', ':' or '?'.
    virtual int isValidIdentChar(int c);

    /// The value of an identifier; fails with a Null \a result for an unknown one.
    virtual int getValue(const char *name, variant::Variant &result);
    /// Calls a function of m_stdFuncDef.
    virtual int callFunction(const char *name, int argc, variant::Variant **argv, variant::Variant &result);
    /// Applies an operator of m_stdOpDef: unary with one argument, binary with two.
    virtual int callOperator(const char *name, int argc, variant::Variant **argv, variant::Variant &result);

    /// Calls the handler of the first row of \a table with this name and a signature that fits the arguments.
    /// Fails with a Null \a result when there is none, and when the handler fails.
    int doCallFunction(const SFunctionDef *table, const char *name, int argc, variant::Variant **argv,
                       variant::Variant &result);

    /// A context's functions do not change while it lives: this defines nothing and returns 0. Override
    /// callFunction() to add functions.
    int funcDefine(const char *name, const char *signature, Handler handler, int flags);
    /// There is nothing to release; see funcDefine().
    void funcFree();

    static int fnSin(int argc, variant::Variant **argv, variant::Variant &result);

    static int opUnaryPlus(int argc, variant::Variant **argv, variant::Variant &result);
    static int opUnaryMinus(int argc, variant::Variant **argv, variant::Variant &result);
    static int opUnaryBitNot(int argc, variant::Variant **argv, variant::Variant &result);
    static int opUnaryLogNot(int argc, variant::Variant **argv, variant::Variant &result);

    static int opPlusS_S(int argc, variant::Variant **argv, variant::Variant &result);
    static int opPlusSS_(int argc, variant::Variant **argv, variant::Variant &result);

    static int opMul(int argc, variant::Variant **argv, variant::Variant &result);
    static int opDiv(int argc, variant::Variant **argv, variant::Variant &result);
    static int opMod(int argc, variant::Variant **argv, variant::Variant &result);
    static int opAdd(int argc, variant::Variant **argv, variant::Variant &result);
    static int opSub(int argc, variant::Variant **argv, variant::Variant &result);
    static int opBitLeft(int argc, variant::Variant **argv, variant::Variant &result);
    static int opBitRight(int argc, variant::Variant **argv, variant::Variant &result);
    static int opLT(int argc, variant::Variant **argv, variant::Variant &result);
    static int opGT(int argc, variant::Variant **argv, variant::Variant &result);
    static int opLE(int argc, variant::Variant **argv, variant::Variant &result);
    static int opGE(int argc, variant::Variant **argv, variant::Variant &result);
    static int opEQ(int argc, variant::Variant **argv, variant::Variant &result);
    static int opNE(int argc, variant::Variant **argv, variant::Variant &result);
    static int opBitAnd(int argc, variant::Variant **argv, variant::Variant &result);
    static int opBitXor(int argc, variant::Variant **argv, variant::Variant &result);
    static int opBitOr(int argc, variant::Variant **argv, variant::Variant &result);
    static int opLogAnd(int argc, variant::Variant **argv, variant::Variant &result);
    static int opLogOr(int argc, variant::Variant **argv, variant::Variant &result);
};

} // namespace cexev
