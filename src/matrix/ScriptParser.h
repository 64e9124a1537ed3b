// SPDX-License-Identifier: GPL-3.0-or-later
// Parser of the matrix script language: one assignment "NAME = expression".
#pragma once

#include <QString>
#include <QStringView>

#include <memory>
#include <stdexcept>
#include <vector>

namespace MatrixScript {

// Status numbers that Execute returns for the kinds of failure.
enum class Status : int {
    Success = 0,
    Syntax = 1,        ///< the text is not a valid script
    UnknownName = 2,   ///< a variable or function that does not exist
    Shape = 3,         ///< operands or arguments that do not fit together
    Resources = 4      ///< out of memory or another failure of the machine
};

// A failure at a position of the script (1-based character position; 0 when none applies).
class ScriptError : public std::runtime_error
{
public:
    ScriptError(Status status, int position, const QString& message);
    Status status() const { return m_status; }
    int position() const { return m_position; }
    const QString& message() const { return m_message; }

private:
    Status m_status;
    int m_position;
    QString m_message;
};

enum class BinaryOp { Add, Subtract, Multiply, Divide, Power };
enum class Function { Cols, Max, Min, MaxAt, MinAt, Mean, Sum, Count };

struct Node
{
    enum class Kind { Number, Variable, Negate, Binary, Call } kind = Kind::Number;
    int position = 0; ///< where the node starts in the script, for error texts
    int depth = 1;    ///< height of the subtree
    double number = 0.0;
    QString name; ///< variable name, or the function name as written
    BinaryOp op = BinaryOp::Add;
    Function function = Function::Max;
    QString argumentText; ///< a call's first argument as written: equal texts, equal values
    std::vector<std::unique_ptr<Node>> children;
};

struct Program
{
    QString target;
    int targetPosition = 1;
    std::unique_ptr<Node> expression;
};

// Throws ScriptError for text that is not a valid script.
std::unique_ptr<Program> Parse(QStringView script);

const char* OperatorText(BinaryOp op);

} // namespace MatrixScript
