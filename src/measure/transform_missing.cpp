#include "measure/transform.h"

namespace tarno2 {

bool RealTransform::available() {
    return false;
}

std::unique_ptr<RealTransform> RealTransform::create(size_t /*length*/) {
    return nullptr;
}

}  // namespace tarno2
