#pragma once
#include "PlatformExport.h"

namespace ML {

// The host's parameter-property interface: kind, range and step of each
// parameter in display units, conversions between the normalised value and the
// displayed one, and whether the effect keeps history between buffers.
class PLATFORM_API VSTPropertySupportMixin {
public:
    enum ParameterType : int {
        kNotAParameter = -1,
        kDecibels = 1,
        kHertz = 2,
        kTime = 3,
        kNumber = 4,
    };

    virtual ParameterType GetParameterType(unsigned index) = 0;                                // slot 0
    virtual float GetParameterMax(unsigned index) const = 0;                                  // slot 1
    virtual float GetParameterMin(unsigned index) const = 0;                                  // slot 2
    virtual float GetParameterStep(unsigned index) const = 0;                                 // slot 3
    virtual bool SupportsDisplayValueToParameter(unsigned index) const = 0;                   // slot 4
    virtual float ConvertDisplayValueToParameter(unsigned index, float displayValue) const = 0;  // slot 5
    virtual float ConvertParameterValueToDisplay(unsigned index, float parameterValue) const = 0;  // slot 6
    virtual bool HasHistory();                                                                // slot 7: true
    virtual ~VSTPropertySupportMixin();                                                       // slot 8
};

}  // namespace ML
