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

bool FormulaEvaluator::SetFormula(const std::string& formula) {
    impl_->accepted = false;
    if (formula.size() > kMaxFormulaLength) {
        error_ = "formula too long";
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
