#include "Demo.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QImage>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QTabWidget>
#include <QTableView>
#include <QTextBrowser>

#include <cstdio>
#include <functional>
#include <system_error>

#include "NorvikCore/qt/QtConversions.h"

namespace desk {

using namespace norvik;

namespace {

class Session {
 public:
  Session(MainThreadWatch& application, DeskWindow& window, std::filesystem::path target)
      : application_(application), window_(window), target_(std::move(target)) {}

  /// Runs the event loop until the condition is true. False after ten seconds.
  bool wait(const char* what, const std::function<bool()>& condition) {
    QElapsedTimer time;
    time.start();
    while (!condition() && time.elapsed() < 10000) {
      QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
    }
    if (!condition()) fail(what);
    return condition();
  }
  void expect(const char* what, bool isTrue) {
    if (!isTrue) fail(what);
  }
  [[nodiscard]] bool hasFailed() const { return hasFailed_; }

  template <class Widget>
  Widget& find(const char* name) const {
    return *window_.findChild<Widget*>(QLatin1String(name));
  }
  void press(QWidget& widget, int key, const QString& text = {}) const {
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text), up(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QApplication::sendEvent(&widget, &down);
    QApplication::sendEvent(&widget, &up);
    QCoreApplication::processEvents();
  }
  void type(const char* field, const char* text) const {
    auto& edit = find<QLineEdit>(field);
    edit.setFocus();
    edit.selectAll();
    for (const QChar c : QString::fromUtf8(text)) press(edit, 0, c);
  }
  void sort(int column) const {
    auto& people = find<QTableView>("people");
    QMetaObject::invokeMethod(
        &people, [&people, column] { people.sortByColumn(column, Qt::AscendingOrder); }, Qt::QueuedConnection);
    QCoreApplication::processEvents();
  }
  void commit(const char* field) const { press(find<QLineEdit>(field), Qt::Key_Return, QStringLiteral("\r")); }

  /// NAME-light.png, NAME-dark.png, and the same at twice the size with @2x.
  void picture(const QString& name) {
    application_.stop();  // the pictures are not work of the window
    for (const Appearance appearance : {Appearance::Light, Appearance::Dark}) {
      applyTheme(application_, appearance);
      QCoreApplication::processEvents();
      for (const int scale : {1, 2}) {
        QImage image(window_.size() * scale, QImage::Format_RGB32);
        image.setDevicePixelRatio(scale);
        window_.render(&image);
        const QString file = name + (appearance == Appearance::Light ? "-light" : "-dark") + (scale == 2 ? "@2x" : "");
        if (!image.save(nk_toQString(NSString((target_ / (file.toStdString() + ".png")).string())))) fail("a picture");
      }
    }
    applyTheme(application_, Appearance::Light);
    QCoreApplication::processEvents();
    application_.resume();
  }

 private:
  void fail(const char* what) {
    std::printf("failed: %s\n", what);
    hasFailed_ = true;
  }

  MainThreadWatch& application_;
  DeskWindow& window_;
  const std::filesystem::path target_;
  bool hasFailed_ = false;
};

}  // namespace

int runDemo(MainThreadWatch& application, const std::filesystem::path& employer, const std::filesystem::path& target) {
  const std::filesystem::path folder = target / "employer";
  std::filesystem::create_directories(folder);
  for (const char* file : {"employer.ini", "employees.csv", "items.csv"}) {
    std::filesystem::copy_file(employer / file, folder / file, std::filesystem::copy_options::overwrite_existing);
  }
  auto desk = make<Desk>();
  DeskWindow window(desk);
  window.resize(1440, 880);
  window.show();
  QCoreApplication::processEvents();

  Session session(application, window, target);
  application.start();
  const auto isIdle = [&] { return !desk->isBusy(); };
  const auto sheet = [&] { return session.find<QTextBrowser>("sheet").toPlainText(); };
  desk->open(folder, 1);
  if (!session.wait("opening the folder", [&] { return isIdle() && desk->selected() && !sheet().isEmpty(); })) return 1;
  const std::size_t people = desk->people()->count();
  std::printf("opened %zu people\n", people);
  session.picture("payslip");

  // A search by keys, the second of the found people, and a bonus by its rate.
  session.type("search", "fin");
  session.wait("searching", [&] { return !desk->isSearching(); });
  std::printf("found %zu people\n", desk->shown()->count());
  session.type("search", "");
  session.press(session.find<QLineEdit>("search"), Qt::Key_Backspace);
  session.wait("showing all again", [&] { return !desk->isSearching() && desk->shown()->count() == people; });
  session.sort(0);
  session.sort(3);
  session.sort(-1);
  session.press(session.find<QTableView>("people"), Qt::Key_Down);
  const Ref<Person> person = desk->selected();
  session.expect("selecting the second person", person && person->index == 1);
  const Decimal netBefore = desk->totals()->net();
  session.type("bonusRate", "7.5");
  session.commit("bonusRate");
  session.expect("the bonus of the rate", person->bonus() == (person->pay() * 75 / 1000).round(2));
  session.type("bonusReason", "Spring target met");
  session.commit("bonusReason");
  session.expect("the totals follow", desk->totals()->net() == netBefore + person->bonus());
  session.wait("the preview", [&] { return sheet().contains(QStringLiteral("Spring target met")); });
  std::printf("a bonus of %s\n", to_string(person->bonus()).c_str());
  session.picture("bonus");

  session.type("sortCode", "20125");
  session.commit("sortCode");
  session.expect("a wrong sort code is refused", person->sortCode() != "20125");
  session.picture("refused");
  session.type("sortCode", "201252");
  session.commit("sortCode");
  session.expect("a sort code in pairs", person->sortCode() == "20-12-52");

  desk->print(target);
  session.wait("printing", isIdle);
  desk->save();
  session.wait("saving", [&] { return !desk->isEdited() && isIdle(); });
  session.expect("the bonus was saved", desk->selected() && desk->selected()->bonus().isZero() &&
                                            desk->totals()->net() == netBefore + person->bonus());
  window.findChild<QTabWidget*>()->setCurrentIndex(1);
  QCoreApplication::processEvents();
  session.picture("log");

  application.stop();
  // A screen that shows 60 pictures a second shows each for 16 ms, so a longer event would be visible. The time on the
  // clock also includes other work of the machine.
  const auto& longest = application.longest();
  std::printf("longest event of the main thread: %.1f ms of processor time (%s), %.1f ms on the clock\n",
              longest.processor, qPrintable(longest.event), longest.wall);
  return session.hasFailed() ? 1 : 0;
}

}  // namespace desk
