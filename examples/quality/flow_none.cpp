/// @file
/// No other methods to compare with.

#include "flow.h"

std::vector<FlowMethod> flowMethodsOfOpenCv()
{
    return {};
}
