// examples/payrun/BuiltInTemplate.h - the text of payslip.template as it was when the program was built.
#pragma once

namespace payrun {

extern const char* const builtInTemplate;

}  // namespace payrun
