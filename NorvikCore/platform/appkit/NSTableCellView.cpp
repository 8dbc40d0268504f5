#include "NorvikCore/platform/appkit/NSTableCellView.h"

namespace norvik {

NSTableCellView::~NSTableCellView() = default;

}  // namespace norvik
