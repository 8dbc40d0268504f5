// The examples of the headers of queries, each in the suite of its header.
#include "NorvikCore/linq/LINQ.h"

#include "Payslips.h"

using namespace norvik;

namespace {

class Employee : public NSObject {
  NK_OBJECT(Employee, NSObject)
  NK_PROPERTY(std::int64_t, payrollNumber, setPayrollNumber)
  NK_PROPERTY(NSString, name, setName)
  [[nodiscard]] NSString description() const override { return "#" + to_string(Decimal(payrollNumber())); }
};

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(Ref<Employee>, employee, setEmployee)
  NK_PROPERTY(NSString, department, setDepartment)
  NK_PROPERTY(Decimal, netPay, setNetPay)
  NK_PROPERTY(Ref<NSArray>, lines, setLines)
  NK_PROPERTY(bool, isPaid, setPaid)
  [[nodiscard]] NSString name() const { return employee()->name(); }
  [[nodiscard]] NSString description() const override { return name(); }
};

Ref<Employee> employee(std::int64_t number, const char* name) {
  auto made = make<Employee>();
  made->setPayrollNumber(number);
  made->setName(name);
  return made;
}

Ref<Payslip> payslip(const char* name, const char* department, Decimal netPay, const Ref<NSArray>& lines, bool isPaid) {
  auto made = make<Payslip>();
  made->setEmployee(employee(1, name));
  made->setDepartment(department);
  made->setNetPay(netPay);
  made->setLines(lines);
  made->setPaid(isPaid);
  return made;
}

Ref<NSArray> threePayslips() {
  return NSArray::arrayWithObjects(
      payslip("Cid", "Sales", 1757.97_dec, NSArray::arrayWithObjects("basic pay"), true),
      payslip("Ann", "Works", 2197.10_dec, NSArray::arrayWithObjects("basic pay", "bonus"), true),
      payslip("Bob", "Sales", -12.50_dec, NSArray::array(), false));
}

Ref<NSDictionary> threeRates() {
  return NSDictionary::dictionaryWith({{"basic", 0.20_dec}, {"higher", 0.40_dec}, {"none", 0_dec}});
}

int taxOf(int month) { return 100 * month; }

TEST(LINQ, HeaderExample) {
  const Ref<NSArray> payslips = threePayslips();
  Value net =
      payslips | linq_where([](const Payslip& p) { return p.isPaid(); }) | linq_select(&Payslip::netPay) | linq_sum();
  Ref<NSMutableArray> unpaid = linq_where(*payslips, [](const Payslip& p) { return !p.isPaid(); });
  EXPECT_EQ(text(net), "3955.07");
  EXPECT_EQ(text(unpaid), "[Bob]");
}

TEST(Chain, HeaderExample) {
  const Ref<NSArray> payslips = threePayslips();
  const auto isPaid = [](const Payslip& p) { return p.isPaid(); };
  Ref<NSMutableDictionary> groups = payslips | linq_where(isPaid) | linq_groupBy(&Payslip::department);
  EXPECT_EQ(text(groups), "{Sales: [Cid], Works: [Ann]}");
}

TEST(NSArrayLINQ_Aggregation, HeaderExample) {
  const Ref<NSArray> payslips = threePayslips(), amounts = NSArray::arrayWithObjects(3, 12.50_dec, 7);
  EXPECT_EQ(text(linq_sum(*NSArray::arrayWithObjects(0.10_dec, 0.20_dec))), "0.30");
  EXPECT_EQ(linq_sumForKey(*payslips, "netPay"), 3942.57_dec);
  EXPECT_EQ(text(linq_max(*amounts)), "12.50");
}

TEST(NSArrayLINQ_Converting, HeaderExample) {
  const Ref<NSArray> employees = NSArray::arrayWithObjects(employee(17, "Cid"), employee(4, "Ann"));
  EXPECT_EQ(text(linq_toDictionaryWithKeyBlock(*employees, &Employee::payrollNumber)), "{17: #17, 4: #4}");
  EXPECT_EQ(text(linq_toDictionaryWithKeyBlock(*employees, &Employee::payrollNumber, &Employee::name)),
            "{17: Cid, 4: Ann}");
}

TEST(NSArrayLINQ_Filtering, HeaderExample) {
  const Ref<NSArray> payslips = threePayslips();
  const Ref<NSArray> fields = NSArray::arrayWithObjects("Ann", 12.50_dec, 7, Value::null());
  EXPECT_EQ(text(linq_where(*payslips, [](const Payslip& p) { return p.netPay() < 0; })), "[Bob]");
  EXPECT_EQ(text(linq_firstOrNil(*payslips, [](const Payslip& p) { return p.name() == "Ann"; })), "Ann");
  EXPECT_EQ(text(linq_ofType<Decimal>(*fields)), "[12.50]");
}

TEST(NSArrayLINQ_Generation, HeaderExample) {
  EXPECT_EQ(text(linq_from(1, 12)), "[1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12]");
  const Ref<NSMutableArray> downwards = linq_from<NSMutableArray>(12, 1);
  EXPECT_EQ(text(downwards), "[12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1]");
  EXPECT_EQ(text(linq_with([](int month) { return taxOf(month); }, 12)),
            "[0, 100, 200, 300, 400, 500, 600, 700, 800, 900, 1000, 1100]");
}

TEST(NSArrayLINQ_Grouping, HeaderExample) {
  const Ref<NSArray> payslips = threePayslips();
  auto byDepartment = linq_groupBy(*payslips, &Payslip::department);
  std::string groups;
  for (const auto& [department, group] : *byDepartment) groups += text(department) + " " + text(group) + "\n";
  EXPECT_EQ(groups, "Sales [Cid, Bob]\nWorks [Ann]\n");
}

TEST(NSArrayLINQ_Partitioning, HeaderExample) {
  const Ref<NSMutableArray> payslips = NSMutableArray::array();
  for (const char* name : {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l"})
    payslips->addObject(payslip(name, "Sales", 1_dec, NSArray::array(), true));
  EXPECT_EQ(text(linq_take(*payslips, 10)), "[a, b, c, d, e, f, g, h, i, j]");
  EXPECT_EQ(text(linq_skip(*payslips, 10)), "[k, l]");
}

TEST(NSArrayLINQ_Projection, HeaderExample) {
  const Ref<NSArray> payslips = threePayslips();
  EXPECT_EQ(text(linq_select(*payslips, &Payslip::netPay)), "[1757.97, 2197.10, -12.50]");
  EXPECT_EQ(text(linq_selectMany(*payslips, [](const Payslip& p) { return p.lines(); })),
            "[basic pay, basic pay, bonus]");
}

TEST(NSArrayLINQ_Quantifier, HeaderExample) {
  const Ref<NSMutableArray> payslips = threePayslips()->mutableCopy();
  EXPECT_FALSE(linq_all(*payslips, [](const Payslip& p) { return p.netPay() >= 0; }));
  payslips->removeLastObject();
  EXPECT_TRUE(linq_all(*payslips, [](const Payslip& p) { return p.netPay() >= 0; }));
}

TEST(NSArrayLINQ_Sets, HeaderExample) {
  const Ref<NSArray> payslips = threePayslips(), departments = NSArray::arrayWithObjects("Sales", "Works", "Sales"),
                     invited = NSArray::arrayWithObjects("Ann", "Bob"), paid = NSArray::arrayWithObjects("Ann", "Cid");
  EXPECT_EQ(text(linq_distinct(*departments)), "[Sales, Works]");
  EXPECT_EQ(text(linq_distinctWithBlock(*payslips, &Payslip::department)), "[Cid, Ann]");
  EXPECT_EQ(text(linq_except(*invited, paid)), "[Bob]");
}

TEST(NSArrayLINQ_Sorting, HeaderExample) {
  const Ref<NSArray> payslips = threePayslips(), amounts = NSArray::arrayWithObjects(3, 12.50_dec, -7);
  EXPECT_EQ(text(linq_orderByAscending(*amounts)), "[-7, 3, 12.50]");
  EXPECT_EQ(text(linq_orderByKey(*payslips, "employee.name", true)), "[Ann, Bob, Cid]");
}

TEST(NSDictionaryLINQ_Aggregation, HeaderExample) {
  const Ref<NSDictionary> totalsByDepartment =
      NSDictionary::dictionaryWith({{"Sales", 1745.47_dec}, {"Works", 2197.10_dec}});
  EXPECT_EQ(text(linq_sum(*totalsByDepartment)), "3942.57");
}

TEST(NSDictionaryLINQ_Converting, HeaderExample) {
  const Ref<NSDictionary> totals = NSDictionary::dictionaryWith({{"Sales", 1745.47_dec}, {"Works", 2197.10_dec}});
  EXPECT_EQ(text(linq_toArray(*totals)), "[1745.47, 2197.10]");
  EXPECT_EQ(text(linq_toArrayWhereKey(*totals, [](const NSString& department) { return department != "Sales"; })),
            "[2197.10]");
}

TEST(NSDictionaryLINQ_Filtering, HeaderExample) {
  const Ref<NSDictionary> rates = threeRates();
  EXPECT_EQ(
      text(linq_where(*rates, [](const NSString& band, const Decimal& rate) { return rate > 0 && band != "basic"; })),
      "{higher: 0.40}");
  EXPECT_EQ(text(linq_whereKey(*rates, [](const NSString& band) { return band != "basic"; })),
            "{higher: 0.40, none: 0}");
  EXPECT_EQ(text(linq_whereValue(*rates, [](const Decimal& rate) { return rate > 0; })), "{basic: 0.20, higher: 0.40}");
}

TEST(NSDictionaryLINQ_Generation, HeaderExample) {
  EXPECT_EQ(text(linq_from<NSDictionary>(5, 7)), "{0: 5, 1: 6, 2: 7}");
  const Ref<NSMutableDictionary> months = linq_repeat<NSMutableDictionary>("unpaid", 12);
  EXPECT_EQ(months->count(), 12U);
  EXPECT_EQ(months->objectForKey(0), Value("unpaid"));
  EXPECT_EQ(months->objectForKey(11), Value("unpaid"));
}

TEST(NSDictionaryLINQ_Partitioning, HeaderExample) {
  const Ref<NSDictionary> codes = NSDictionary::dictionaryWith({{"a", 1}, {"b", 2}});
  EXPECT_EQ(text(linq_take(*codes, 1)), "{a: 1}");
  EXPECT_EQ(text(linq_skip(*codes, 1)), "{b: 2}");
}

TEST(NSDictionaryLINQ_Quantifier, HeaderExample) {
  const auto isAnyHigh = [](const Ref<NSDictionary>& rates) {
    return linq_any(*rates, [](const NSString&, const Decimal& rate) { return rate > 0.40_dec; });
  };
  EXPECT_FALSE(isAnyHigh(threeRates()));
  EXPECT_TRUE(isAnyHigh(NSDictionary::dictionaryWith({{"higher", 0.40_dec}, {"additional", 0.45_dec}})));
}

TEST(NSDictionaryLINQ_Sets, HeaderExample) {
  const Ref<NSDictionary> codes = NSDictionary::dictionaryWith({{"a", 1}, {"b", 1}, {"c", 2}}),
                          chosen = NSDictionary::dictionaryWith({{"font", "serif"}}),
                          defaults = NSDictionary::dictionaryWith({{"font", "sans"}, {"size", 12}});
  EXPECT_EQ(text(linq_distinct(*codes)), "{a: 1, c: 2}");
  EXPECT_EQ(text(linq_merge(*chosen, defaults)), "{font: serif, size: 12}");
}

}  // namespace
