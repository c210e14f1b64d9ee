#include "qz/system/data/baseimpl.h"

#include <algorithm>

#include "qz/system/frame/error.h"

namespace QZSystem {

namespace {

constexpr const char* typeMismatch = "data type mismatch found when using generic data";

// An object with one value soon has several.
constexpr std::size_t firstRoom = 12;

}  // namespace

// Delegates, so that the destructor deletes the copies made so far if one fails.
QZBaseImpl::QZBaseImpl(const QZBaseImpl& other) : QZBaseImpl() {
  data.reserve(other.data.size());
  for (const QZBaseData* holder : other.data) {
    if (holder) data.push_back(holder->CreateCopy());
  }
}

QZBaseImpl::~QZBaseImpl() {
  for (QZBaseData* holder : data) delete holder;
}

void QZBaseImpl::Clear() {
  for (QZBaseData* holder : data) delete holder;
  data.clear();
}

bool QZBaseImpl::CheckTypeWarning() {
  QZThrow.Warning(typeMismatch);
  return false;
}

void QZBaseImpl::Grow() { data.reserve(std::max(firstRoom, 2 * data.size())); }

void QZBaseImpl::Append(const QZBaseImpl& other) {
  QZBaseImpl copies(other);
  data.insert(data.end(), copies.data.begin(), copies.data.end());
  copies.data.clear();
}

void QZBaseImpl::Replace(std::unique_ptr<QZBaseData> holder) {
  const unsigned int tag = holder->GetTag();
  const auto place =
      std::find_if(data.begin(), data.end(), [tag](const QZBaseData* each) { return each && each->GetTag() == tag; });
  if (place == data.end()) return Append(std::move(holder));
  delete *place;
  *place = holder.release();
}

bool QZBaseImpl::Delete(unsigned int tag) {
  auto kept = data.begin();
  for (QZBaseData* holder : data) {
    if (holder && holder->GetTag() == tag) {
      delete holder;
    } else {
      *kept++ = holder;
    }
  }
  const bool found = kept != data.end();
  data.erase(kept, data.end());
  return found;
}

}  // namespace QZSystem
