#include "derived/formula_evaluator.h"

#include <muParser.h>

#include <stdexcept>

namespace tl {

struct FormulaEvaluator::Impl {
    mu::Parser parser;
    bool accepted = false;
    // The names the accepted formula reads. Asking the parser re-parses the
    // formula each time, and the check asks about 217 names.
    mu::varmap_type used;
};

FormulaEvaluator::FormulaEvaluator() : impl_(std::make_unique<Impl>()) {}
FormulaEvaluator::~FormulaEvaluator() = default;

double* FormulaEvaluator::DefineVariable(const std::string& name, double value) {
    values_.push_back(value);
    double* p = &values_.back();
    try {
        impl_->parser.DefineVar(name, p);
    } catch (const mu::Parser::exception_type& e) {
        error_ = e.GetMsg();
    }
    return p;
}

namespace {

// The position of an assignment (=, +=, -=, *=, /=) in the formula, or npos.
// The parser would accept one and write the variable's value, so that a
// channel such as "Humid = Humid + 1" would count up from row to row; a user
// channel is an expression of its own row only. The comparisons ==, <=, >=
// and != are not assignments.
size_t FindAssignment(const std::string& formula) {
    for (size_t i = 0; i < formula.size(); ++i) {
        if (formula[i] != '=') continue;
        const char before = i > 0 ? formula[i - 1] : ' ';
        const char after = i + 1 < formula.size() ? formula[i + 1] : ' ';
        if (after == '=') {
            ++i;  // "==": both characters belong to the comparison
            continue;
        }
        if (before == '<' || before == '>' || before == '!') continue;
        return i;
    }
    return std::string::npos;
}

}  // namespace

bool FormulaEvaluator::SetFormula(const std::string& formula) {
    impl_->accepted = false;
    if (formula.size() > kMaxFormulaLength) {
        error_ = "formula too long";
        return false;
    }
    if (const size_t at = FindAssignment(formula); at != std::string::npos) {
        error_ = "assignment at position " + std::to_string(at + 1);
        return false;
    }
    try {
        impl_->parser.SetExpr(formula);
        // GetUsedVar parses the whole expression without evaluating it; it
        // lists unknown names too (as if defined), so each is checked here.
        const auto& used = impl_->parser.GetUsedVar();
        const auto& defined = impl_->parser.GetVar();
        for (const auto& entry : used) {
            if (defined.find(entry.first) == defined.end()) {
                error_ = "unknown name " + entry.first;
                return false;
            }
        }
        impl_->used = used;
        impl_->accepted = true;
        return true;
    } catch (const mu::Parser::exception_type& e) {
        error_ = e.GetMsg();
        return false;
    } catch (const std::exception& e) {
        error_ = e.what();
        return false;
    }
}

bool FormulaEvaluator::IsUsed(const std::string& name) const {
    return impl_->accepted && impl_->used.find(name) != impl_->used.end();
}

double FormulaEvaluator::Evaluate() {
    if (!impl_->accepted) throw std::runtime_error("no formula");
    try {
        return impl_->parser.Eval();
    } catch (const mu::Parser::exception_type& e) {
        throw std::runtime_error(e.GetMsg());
    }
}

}  // namespace tl
