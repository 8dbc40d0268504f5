// NorvikCore/platform/appkit/NSTableCellView.h - a cell of a table, which shows the object of its row.
//
//   cell->setObjectValue(payslip);
//   bind_toObject_withKeyPath_options(*label, NSValueBinding, *cell, "objectValue.grossPay", nullptr);
//   cell->setObjectValue(another);              // the label follows
//
// Without a screen it has no other functions. Confined to the thread of its table.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSObject.h"

namespace norvik {

class NK_EXPORT NSTableCellView : public NSObject {
  NK_OBJECT(NSTableCellView, NSObject)
  NK_PROPERTY(Value, objectValue, setObjectValue)
  ~NSTableCellView() override;
};

}  // namespace norvik
