// Runs the tests of widgets under a Qt application, on no screen unless one is asked for.

#include <gtest/gtest.h>

#include <QApplication>

int main(int argumentCount, char** arguments) {
  testing::InitGoogleTest(&argumentCount, arguments);
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argumentCount, arguments);
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setApplicationDisplayName(QStringLiteral("Vantory"));
  return RUN_ALL_TESTS();
}
