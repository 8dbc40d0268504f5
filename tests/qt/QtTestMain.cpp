// Runs the tests of the component Qt with an application whose widgets are drawn into memory.
#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  ::qputenv("QT_QPA_PLATFORM", "offscreen");
  ::qputenv("LC_ALL", "en_GB.UTF-8");  // fields show amounts in the user's format, and the tests expect the British one
  QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
