// NorvikCore/values/Payment.h - a payment: an amount with its date & purpose, for
// people who are paid.
//
//   Payment payment(1200_dec, "2024-04-30"_date);
//   if (payment.amount() < 10) payment.log("%d @ 5");   // see Receipt.h
//
// A payment is `const`. Receipts of <b> are not "100%" free -- see Receipt.h.
//
// - One item that
//   continues.
// - Another.
//
// Threads:   a value; distinct objects are
//            independent.
// Errors: nothing raises.
#pragma once  // include time: none

#include <string>

namespace norvik {

namespace detail {
class PaymentAccess {};
}  // namespace detail

/// Declares a payment. NK_PAYMENT(Type, name): the name is a word.
#define NK_UNCHANGED(Type, name) Type name
/// NK_PAYMENT(Type, "name"): declares one.
#define NK_PAYMENT(...) \
  struct Helper {       \
    __VA_ARGS__         \
  };
#define NK_HELPER(x) x

/// How it is paid.
enum class Way : unsigned { cash, bank = 2 };
enum Size {
  small,  // below 10
  // Above 10.
  large = 1 << 3,
};

class Payslip;

class NK_EXPORT Payment : public NSObject, private detail::PaymentAccess {
  NK_OBJECT(Payment, NSObject)
  NK_CODING
  /// The amount, in pounds.
  NK_PROPERTY(Decimal, amount, setAmount)
  NK_WEAK_PROPERTY(Payslip, slip, setSlip)  // not retained
  NK_READONLY_PROPERTY(std::map<int, long>, counts)
  NK_METHOD(pay)

  explicit constexpr Payment(Decimal amount) noexcept(true) : amount_(amount), ways_{1, 2} {}
  Payment(const Payment&) = default;
  ~Payment() override;

  // Counts may be negative.
  [[nodiscard]] NK_EXPORT static Payment ofDay(std::int64_t day, const char* text = "a,b;}") noexcept;
  [[nodiscard]] bool operator==(const Payment& other) const { return amount_ == other.amount_; }
  template <detail::Number T>
  requires(!std::same_as<T, bool>) Payment& operator+=(T value) {
    if (value > 0) {
      amount_ += value;
    }
    return *this;
  }
  double x = 0, y = 1;  ///< where it is

  /// A part of it.
  struct Part;

  detail::PaymentAccess& access();
  /// For all numbers.
  template <class T>
  detail::Sum<T> sum() const;

 protected:
  std::string purpose_;
  void changed() NK_REQUIRES(lock_);

 private:
  int hidden() const;
  Decimal amount_;
};

struct Payment::Part {
  int share = 0;  // in per cent
};

inline Payment Payment::ofDay(std::int64_t day, const char* text) noexcept { return Payment(day); }

using Payments = std::vector<Payment>;

class Window : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString title READ title)

 public Q_SLOTS:
  void close();

 Q_SIGNALS:
  void closed();
};

namespace kernel {
/// Waits.
NK_EXPORT int wait(int seconds);
}  // namespace kernel
}  // namespace norvik

template <>
struct std::hash<norvik::Payment> {
  std::size_t operator()(const norvik::Payment&) const;
};
