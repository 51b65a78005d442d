// User channel formulas as a user may type them: the parser's check of the
// formula against every name a channel may use, then its value on a row.
// (The channel's own check of its inputs, CheckInputsRequired, builds a new
// parser for every formula; the deep harness reaches it through the user
// channel file.)
#include <cstdint>
#include <string>
#include <vector>

#include "derived/formula_evaluator.h"
#include "derived/user_channels.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string formula(reinterpret_cast<const char*>(data), size);
    // The evaluator with every name is made once; each input is a new
    // formula on it.
    static tl::FormulaEvaluator& e = *[] {
        auto* made = new tl::FormulaEvaluator;
        for (int s = 1; s <= 201; ++s) made->DefineVariable(tl::UserVarName(s), s * 0.5);
        for (const char* name : {"Mass", "Temp", "Press", "Humid"}) made->DefineVariable(name, 1.0);
        for (int k = 1; k <= 16; ++k) made->DefineVariable("CAR_" + std::to_string(k), k);
        return made;
    }();
    if (!e.SetFormula(formula)) return 0;
    try {
        volatile double v = e.Evaluate();
        (void)v;
    } catch (const std::exception&) {
    }
    return 0;
}
