#include "ML/VSTPropertySupportMixin.h"

namespace ML {

bool VSTPropertySupportMixin::HasHistory() { return true; }

VSTPropertySupportMixin::~VSTPropertySupportMixin() = default;

}  // namespace ML
