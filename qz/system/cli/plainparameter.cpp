#include "qz/system/cli/plainparameter.h"

namespace QZSystem {

namespace {

// The iterator that every kind hands out over one of its lists.
template <class T>
QZIterBase<const T>* over(const std::deque<T>& list) {
  return new QZSTLIter<ConstIterGuts<std::deque<T>>>(list);
}

}  // namespace

QZFloatParameter::QZFloatParameter(const std::string& newName, float value) : QZPODParameter(newName) {
  QZFloatParameter::SetDefault(value);
}

std::string QZFloatParameter::StaticClassID() { return "float"; }

std::string QZFloatParameter::ClassID() const { return StaticClassID(); }

QZFloatParameter* QZFloatParameter::CreateCopy() const { return new QZFloatParameter(*this); }

QZIterBase<const float>* QZFloatParameter::GetValues() const { return over(TypedValues()); }

QZIterBase<const float>* QZFloatParameter::GetDefaults() const { return over(TypedDefaults()); }

const void* QZFloatParameter::FactoryTypeID() const { return QZGetDataType<QZFloatParameter>(); }

QZDoubleParameter::QZDoubleParameter(const std::string& newName, double value) : QZPODParameter(newName) {
  QZDoubleParameter::SetDefault(value);
}

std::string QZDoubleParameter::StaticClassID() { return "double"; }

std::string QZDoubleParameter::ClassID() const { return StaticClassID(); }

QZDoubleParameter* QZDoubleParameter::CreateCopy() const { return new QZDoubleParameter(*this); }

QZIterBase<const double>* QZDoubleParameter::GetValues() const { return over(TypedValues()); }

QZIterBase<const double>* QZDoubleParameter::GetDefaults() const { return over(TypedDefaults()); }

const void* QZDoubleParameter::FactoryTypeID() const { return QZGetDataType<QZDoubleParameter>(); }

QZIntParameter::QZIntParameter(const std::string& newName, int value) : QZPODParameter(newName) {
  QZIntParameter::SetDefault(value);
}

std::string QZIntParameter::StaticClassID() { return "int"; }

std::string QZIntParameter::ClassID() const { return StaticClassID(); }

QZIntParameter* QZIntParameter::CreateCopy() const { return new QZIntParameter(*this); }

QZIterBase<const int>* QZIntParameter::GetValues() const { return over(TypedValues()); }

QZIterBase<const int>* QZIntParameter::GetDefaults() const { return over(TypedDefaults()); }

const void* QZIntParameter::FactoryTypeID() const { return QZGetDataType<QZIntParameter>(); }

QZUIntParameter::QZUIntParameter(const std::string& newName, unsigned int value) : QZPODParameter(newName) {
  QZUIntParameter::SetDefault(value);
}

std::string QZUIntParameter::StaticClassID() { return "unsigned"; }

std::string QZUIntParameter::ClassID() const { return StaticClassID(); }

QZUIntParameter* QZUIntParameter::CreateCopy() const { return new QZUIntParameter(*this); }

QZIterBase<const unsigned int>* QZUIntParameter::GetValues() const { return over(TypedValues()); }

QZIterBase<const unsigned int>* QZUIntParameter::GetDefaults() const { return over(TypedDefaults()); }

const void* QZUIntParameter::FactoryTypeID() const { return QZGetDataType<QZUIntParameter>(); }

QZBoolParameter::QZBoolParameter(const std::string& newName, bool value) : QZPODParameter(newName) {
  QZBoolParameter::SetDefault(value);
}

std::string QZBoolParameter::StaticClassID() { return "bool"; }

bool QZBoolParameter::AddLegalValue(const std::string&) { return false; }

bool QZBoolParameter::AddIllegalValue(const std::string&) { return false; }

bool QZBoolParameter::AddLegalRange(const std::string&, const std::string&) { return false; }

bool QZBoolParameter::AddIllegalRange(const std::string&, const std::string&) { return false; }

std::string QZBoolParameter::ClassID() const { return StaticClassID(); }

QZBoolParameter* QZBoolParameter::CreateCopy() const { return new QZBoolParameter(*this); }

QZIterBase<const bool>* QZBoolParameter::GetValues() const { return over(TypedValues()); }

QZIterBase<const bool>* QZBoolParameter::GetDefaults() const { return over(TypedDefaults()); }

const void* QZBoolParameter::FactoryTypeID() const { return QZGetDataType<QZBoolParameter>(); }

QZStringParameter::QZStringParameter(const std::string& newName, const std::string& value) : QZPODParameter(newName) {
  QZStringParameter::SetDefault(value);
}

std::string QZStringParameter::StaticClassID() { return "string"; }

bool QZStringParameter::AddLegalRange(const std::string&, const std::string&) { return false; }

bool QZStringParameter::AddIllegalRange(const std::string&, const std::string&) { return false; }

std::string QZStringParameter::ClassID() const { return StaticClassID(); }

QZStringParameter* QZStringParameter::CreateCopy() const { return new QZStringParameter(*this); }

QZIterBase<const std::string>* QZStringParameter::GetValues() const { return over(TypedValues()); }

QZIterBase<const std::string>* QZStringParameter::GetDefaults() const { return over(TypedDefaults()); }

const void* QZStringParameter::FactoryTypeID() const { return QZGetDataType<QZStringParameter>(); }

}  // namespace QZSystem
