#include "convert/conversion_state.h"

namespace tl {

ConversionState& Conversion() {
    static ConversionState state;
    return state;
}

}  // namespace tl
