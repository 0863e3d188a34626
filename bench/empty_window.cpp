// What opening any main window costs.

#include <QApplication>
#include <QMainWindow>

int main(int argumentCount, char** arguments) {
  const QApplication application(argumentCount, arguments);
  QMainWindow window;
  window.resize(800, 600);
  window.show();
  return QApplication::exec();
}
