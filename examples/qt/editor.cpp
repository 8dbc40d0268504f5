// examples/qt/editor.cpp - a window in which the payslips of a pay run are edited.
#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/qt/NKArrayModel.h"
#include "NorvikCore/qt/NKFormatterValidator.h"
#include "NorvikCore/qt/NKLogModel.h"
#include "NorvikCore/qt/NKLogView.h"
#include "NorvikCore/qt/NKMainQueueRunner.h"
#include "NorvikCore/qt/NKPropertyBinding.h"
#include "NorvikCore/qt/QtConversions.h"

#include <QApplication>
#include <QLineEdit>
#include <QTableView>
#include <QVBoxLayout>

using namespace norvik;

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(NSString, name, setName)
  NK_PROPERTY(Decimal, grossPay, setGrossPay)

 public:
  bool validateGrossPay(Value* value, Ref<NSError>* error) {
    if (value->as<Decimal>() >= 0) return true;
    if (error) {
      *error = NSError::errorWithDomain(
          "Pay", 1, NSDictionary::dictionaryWith({{NSLocalizedDescriptionKey, "Pay is not below zero."}}));
    }
    return false;
  }
  NK_METHOD_AS(validateGrossPay, "validateGrossPay:error:")
};

class PayRun : public NSObject {
  NK_OBJECT(PayRun, NSObject)
  NK_PROPERTY(Ref<NSArray>, payslips, setPayslips)
};

class Editor : public QWidget {
 public:
  Editor(PayRun& run, Payslip& slip) {
    auto* const name = new QLineEdit;
    nk_bind_toObject_withKeyPath_options(*name, "text", slip, "name", nullptr);

    auto* const amount = new QLineEdit;
    auto* const pay = new NKFormatterValidator(make<NKMonetaryTermDecimalNumberFormatter>(), *amount);
    nk_bind_toObject_withKeyPath_options(*pay, "value", slip, "grossPay",
                                         NSDictionary::dictionaryWith({{NKBind, "validate"}}));

    auto* const rows = new NKArrayModel(this);
    rows->setColumns({{.keyPath = "name", .title = "Name"},
                      {.keyPath = "grossPay",
                       .title = "Gross pay",
                       .formatter = make<NKMonetaryTermDecimalNumberFormatter>(),
                       .alignment = Qt::AlignRight | Qt::AlignVCenter}});
    rows->setContent(run, "payslips");
    auto* const table = new QTableView;
    table->setModel(rows);

    auto* const log = new NKLogView(new NKLogModel);
    log->setLevel(LOG_LEVEL_WARN);

    auto* const layout = new QVBoxLayout(this);
    for (QWidget* const each : {static_cast<QWidget*>(name), static_cast<QWidget*>(amount),
                                static_cast<QWidget*>(table), static_cast<QWidget*>(log)}) {
      layout->addWidget(each);
    }
  }
};

// So far the page.

#include <cstdio>

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  const NKMainQueueRunner runner;
  auto slip = make<Payslip>();
  slip->setName("Sian");
  slip->setGrossPay(1234.5_dec);
  auto run = make<PayRun>();
  run->setPayslips(NSArray::arrayWithObjects(slip));
  Editor editor(*run, *slip);
  editor.show();
  slip->setGrossPay(2500_dec);
  const auto cell = editor.findChild<NKArrayModel*>()->index(0, 1);
  const auto field = editor.findChildren<NKFormatterValidator*>().constFirst();
  std::printf("%s %s\n", qPrintable(cell.data().toString()), qPrintable(field->edit().text()));
}
