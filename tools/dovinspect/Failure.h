#ifndef DOVINSPECT_FAILURE_H
#define DOVINSPECT_FAILURE_H

#include <exception>
#include <string>

namespace DovInspect {

// One readable line for any exception that reaches a command: no source
// places, no multi-line reports.
std::string DescribeFailure(const std::exception& failure);

}  // namespace DovInspect

#endif
