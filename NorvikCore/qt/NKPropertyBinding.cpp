#include "NorvikCore/qt/NKPropertyBinding.h"

#include "NorvikCore/Categories/NKBlockValueReversingTransformer.h"
#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/qt/NKFormatterValidator.h"
#include "NorvikCore/qt/QtConversions.h"
#include "NorvikCore/qt/internal/ErrorMarks.h"
#include "NorvikCore/qt/internal/QtLink.h"

#include <QLineEdit>
#include <QPointer>
#include <QThread>
#include <QWidget>

#include <memory>
#include <utility>

namespace norvik {
namespace detail {

/// Stands for a value that the model refused: it equals no value of a model.
class RefusedValue : public NSObject {
  NK_OBJECT(RefusedValue, NSObject)
};

/// The receiver of the library's binding: passes the model's values on to the property.
class BoundProperty : public NSObject {
  NK_OBJECT(BoundProperty, NSObject)
  NK_COMPUTED_PROPERTY_WITH_SETTER(Value, value, setValue)

  explicit BoundProperty(NKPropertyBinding& binding) : binding_(&binding), thread_(binding.thread()) {}

  [[nodiscard]] Value value() const {
    const MutexLock lock(mutex_);
    return value_;
  }
  /// The value that the receiver has now. Called on its thread.
  void note(const Value& value) {
    const MutexLock lock(mutex_);
    value_ = value;
  }
  void setValue(const Value& value) {
    if (QThread::currentThread() == thread_) {
      note(value);
      if (binding_ != nullptr) binding_->show(value);
      return;
    }
    {
      const MutexLock lock(mutex_);
      value_ = value;
      if (std::exchange(isPosted_, true)) return;
    }
    link_.post([self = ref(*this)] { self->showPosted(); });
  }
  /// On the binding's thread.
  void close() {
    link_.close();
    binding_ = nullptr;
  }

 private:
  void showPosted() {
    Value newest;
    {
      const MutexLock lock(mutex_);
      isPosted_ = false;
      newest = value_;
    }
    if (binding_ != nullptr) binding_->showSafely(newest);
  }

  NKPropertyBinding* binding_;
  QThread* const thread_;
  const QtLink link_;
  mutable Mutex mutex_;
  Value value_ NK_GUARDED_BY(mutex_);
  bool isPosted_ NK_GUARDED_BY(mutex_) = false;
};

}  // namespace detail

namespace {

/// Null if the receiver is no widget and no validator of one.
QWidget* widgetOf(QObject& receiver) {
  if (const auto* validator = qobject_cast<NKFormatterValidator*>(&receiver)) return &validator->edit();
  return qobject_cast<QWidget*>(&receiver);
}

/// Null if the property is not the value of a field.
NKFormatterValidator* fieldOf(QObject& receiver, const QMetaProperty& property) {
  auto* const field = qobject_cast<NKFormatterValidator*>(&receiver);
  return field != nullptr && property.isUser() ? field : nullptr;
}

QMetaProperty writableProperty(const QObject& receiver, const char* name) {
  const QMetaObject* const type = receiver.metaObject();
  const int index = name != nullptr ? type->indexOfProperty(name) : -1;
  const QMetaProperty property = type->property(index);
  if (index < 0 || !property.isWritable()) {
    NSException::raise(NSInvalidArgumentException, NSString("a ") + type->className() + " has no writable property " +
                                                       (name != nullptr ? name : "(null)"));
  }
  return property;
}

Ref<NSValueTransformer> bindingTransformer(const NSDictionary& options) {
  const Value given = options.objectForKey(NSValueTransformerBindingOption);
  if (auto* transformer = given.object<NSValueTransformer>()) return ref(*transformer);
  const Value name = options.objectForKey(NSValueTransformerNameBindingOption);
  return name.string() != nullptr ? NSValueTransformer::valueTransformerForName(*name.string()) : nullptr;
}

}  // namespace

NKPropertyBinding::NKPropertyBinding(QObject& receiver, const QMetaProperty& property)
    : QObject(&receiver),
      receiver_(receiver),
      property_(property),
      field_(fieldOf(receiver, property)),
      bound_(make<detail::BoundProperty>(*this)) {}

NKPropertyBinding::~NKPropertyBinding() {
  bound_->close();
  norvik::unbind(*bound_, NSValueBinding);
  if (field_ && !errorText_.isEmpty()) field_->setRefusal({});
}

void NKPropertyBinding::bind(NSObject& object, const NSString& keyPath, const Ref<NSDictionary>& options) {
  nk_bind_toObject_withKeyPath_options(*bound_, NSValueBinding, object, keyPath, options);
  const auto info = infoForBinding(*bound_, NSValueBinding);
  const auto processed = info->objectForKey(NSOptionsKey).as<Ref<NSDictionary>>();
  if (const Value update = processed->objectForKey(NSContinuouslyUpdatesValueBindingOption);
      update.isNumber() && receiver_.metaObject()->indexOfProperty("updatesContinuously") >= 0) {
    receiver_.setProperty("updatesContinuously", update.as<bool>());
  }
  if (field_) {
    connect(field_, &NKFormatterValidator::cancelled, this, &NKPropertyBinding::refresh);
    connect(field_, &NKFormatterValidator::refusalEnded, this, [this] {
      error_ = nullptr;
      setErrorText({});
    });
  }
  const auto transformer = bindingTransformer(*processed);
  if (!property_.hasNotifySignal() || (transformer && !transformer->canReverse())) return;
  const QMetaMethod commit = metaObject()->method(metaObject()->indexOfSlot("commit()"));
  connect(&receiver_, property_.notifySignal(), this, commit);
}

void NKPropertyBinding::show(const Value& value) {
  const QVariant variant = nk_toQVariant(value, property_.metaType());
  const QPointer<NKPropertyBinding> self(this);
  {
    const bool wasShowing = std::exchange(isShowing_, true);
    if (property_.read(&receiver_) != variant) property_.write(&receiver_, variant);
    if (!self) return;
    isShowing_ = wasShowing;
  }
  error_ = nullptr;
  if (field_) field_->accept();
  if (self) setErrorText({});
}

void NKPropertyBinding::showSafely(const Value& value) {
  try {
    show(value);
  } catch (const NSException& exception) {  // must not pass through Qt's event loop
    setErrorText(nk_toQString(exception.reason()));
  }
}

void NKPropertyBinding::refresh() {
  const auto info = infoForBinding(*bound_, NSValueBinding);
  if (!info) return;
  try {
    const Ref<NSObject> object = info->objectForKey(NSObservedObjectKey).as<Ref<NSObject>>();
    Value value = object->valueForKeyPath(info->objectForKey(NSObservedKeyPathKey).as<NSString>());
    const auto transformer = bindingTransformer(*info->objectForKey(NSOptionsKey).as<Ref<NSDictionary>>());
    if (transformer) value = transformer->transformedValue(value);
    bound_->note(value);
    show(value);
  } catch (const NSException& exception) {
    setErrorText(nk_toQString(exception.reason()));
  }
}

bool NKPropertyBinding::commit() {
  if (isShowing_ || (field_ && field_->isRestoring_)) return true;
  const Ref<detail::BoundProperty> bound = bound_;
  const QPointer<NKPropertyBinding> self(this);
  Ref<NSError> error;
  NSString reason;
  bool isTaken = false;
  try {
    const Value value = nk_toValue(property_.read(&receiver_));
    bound->note(value);  // so that the binding sees when the model has another one afterwards
    isTaken = nk_updateBoundValue(*bound, value, &error);
    if (error) reason = error->localizedDescription();
  } catch (const NSException& exception) {
    reason = exception.reason();
  }
  if (!self) return isTaken;
  if (isTaken) {
    refresh();
  } else if (infoForBinding(*bound, NSValueBinding)) {
    bound->note(make<detail::RefusedValue>());  // so that the receiver is set whatever the model has next
    error_ = error;
    const QString text = reason.empty() ? QStringLiteral("The value is not accepted.") : nk_toQString(reason);
    if (field_) field_->refuse(text);
    if (self) setErrorText(text);
  }
  return isTaken;
}

void NKPropertyBinding::setErrorText(const QString& text) {
  if (text == errorText_) return;
  errorText_ = text;
  if (field_) {
    field_->setRefusal(text);
  } else if (QWidget* const widget = widgetOf(receiver_)) {
    detail::markError(*widget, *this, text);
  }
  Q_EMIT errorTextChanged(text);
}

NKPropertyBinding& nk_bind_toObject_withKeyPath_options(QObject& receiver, const char* property, NSObject& object,
                                                        const NSString& keyPath, const Ref<NSDictionary>& options) {
  if (receiver.thread() != QThread::currentThread()) {
    NSException::raise(NSInvalidArgumentException, "a QObject is bound on its own thread");
  }
  const QMetaProperty writable = writableProperty(receiver, property);
  unbind(receiver, property);
  std::unique_ptr<NKPropertyBinding> binding(new NKPropertyBinding(receiver, writable));
  binding->bind(object, keyPath, options);
  return *binding.release();
}

NKPropertyBinding& nk_bind_toObject_withKeyPath_options_block_reverseBlock(QObject& receiver, const char* property,
                                                                           NSObject& object, const NSString& keyPath,
                                                                           const Ref<NSDictionary>& options,
                                                                           const NKTransformBlock& block,
                                                                           const NKTransformBlock& reverseBlock) {
  const Ref<NSMutableDictionary> all = options ? options->mutableCopy() : NSMutableDictionary::dictionary();
  if (reverseBlock) {
    all->setObject(NKBlockValueReversingTransformer::valueTransformerWithBlock(block, reverseBlock),
                   NSValueTransformerBindingOption);
  } else if (block) {
    all->setObject(NKBlockValueTransformer::valueTransformerWithBlock(block), NSValueTransformerBindingOption);
  }
  return nk_bind_toObject_withKeyPath_options(receiver, property, object, keyPath, all);
}

NKPropertyBinding* nk_bindingOfProperty(const QObject& receiver, const char* property) {
  for (auto* binding : receiver.findChildren<NKPropertyBinding*>(Qt::FindDirectChildrenOnly)) {
    if (binding->property() == property) return binding;
  }
  return nullptr;
}

void unbind(QObject& receiver, const char* property) {
  NKPropertyBinding* const binding = nk_bindingOfProperty(receiver, property);
  if (binding == nullptr) return;
  binding->setErrorText({});
  delete binding;
}

}  // namespace norvik
