// A program that uses the component Qt, found by find_package, with the meta-object compiler and Qt's keywords.
#include "qt_window.h"

#include <QApplication>

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  const norvik::NKMainQueueRunner runner;
  Window window;
  norvik::NKLogView log(new norvik::NKLogModel, &window);
  emit window.closed();
  return norvik::nk_toQString(norvik::Decimal(5)) == "5" ? 0 : 1;
}
