// A date literal must be a date that exists.
#include "NorvikCore/platform/values/Date_literals.h"

using namespace norvik;

#ifdef SHOULD_NOT_COMPILE
const Date date = "2021-02-29"_date;
#else
const Date date = "2020-02-29"_date;
#endif
