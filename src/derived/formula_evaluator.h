// The formula evaluator of the user channels: a small interface over the
// expression parser (muparser), so that nothing else depends on it. What the
// channels need of it: take a formula text, define named variables with a
// double value, say whether the formula uses a variable, evaluate.
//
// The language is muparser's: + - * / ^, parentheses, comparison and logical
// operators, ?: and the usual functions (sin, cos, sqrt, abs, min, max, ...),
// constants _pi and _e. It has no way to reach files or run code; none is
// added. Evaluation is one row at a time on the calling thread, so results do
// not depend on the parser's OpenMP build.
#pragma once

#include <deque>
#include <memory>
#include <string>

namespace tl {

class FormulaEvaluator {
  public:
    FormulaEvaluator();
    ~FormulaEvaluator();
    FormulaEvaluator(const FormulaEvaluator&) = delete;
    FormulaEvaluator& operator=(const FormulaEvaluator&) = delete;

    // Defines (or redefines) a variable; returns a handle for SetValue.
    double* DefineVariable(const std::string& name, double value);
    // Takes the formula and checks it; false (with Error()) when rejected.
    bool SetFormula(const std::string& formula);
    // Whether the accepted formula reads the variable.
    bool IsUsed(const std::string& name) const;
    // The formula's value with the variables as they stand. Throws
    // std::runtime_error when the parser fails at evaluation.
    double Evaluate();
    const std::string& Error() const { return error_; }

    // Formulas longer than this are refused without parsing.
    static constexpr size_t kMaxFormulaLength = 4096;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
    std::deque<double> values_;  // stable addresses for the parser
    std::string error_;
};

}  // namespace tl
