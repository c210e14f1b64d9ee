#include "qz/system/frame/iterator.h"

#include "qz/platform/memorystream.h"
#include "qz/system/frame/error.h"

namespace QZSystem {

namespace {

constexpr const char* emptyDereference = "Dereferencing empty iterator";

}  // namespace

void SendEmptyDereference() { QZThrow.Error(emptyDereference); }

template class QZConcatIter<const std::string>;
template class QZConcatIter<const std::pair<std::string, std::string>>;
template class QZConcatIter<const bool>;
template class QZConcatIter<const int>;
template class QZConcatIter<const unsigned int>;
template class QZConcatIter<const float>;
template class QZConcatIter<const double>;

template class QZSTLIter<ConstIterGuts<std::vector<std::string>>>;
template class QZSTLIter<ConstIterGuts<std::vector<std::pair<std::string, std::string>>>>;
template class QZSTLIter<ConstIterGuts<std::deque<std::string>>>;
template class QZSTLIter<ConstIterGuts<std::deque<bool>>>;
template class QZSTLIter<ConstIterGuts<std::deque<int>>>;
template class QZSTLIter<ConstIterGuts<std::deque<unsigned int>>>;
template class QZSTLIter<ConstIterGuts<std::deque<float>>>;
template class QZSTLIter<ConstIterGuts<std::deque<double>>>;

template class QZSTLCacheIter<ConstIterGuts<std::vector<bool>>>;

// The streams of a parameter of files; whoever walks them includes their header.
template class QZConcatIter<const qzisstream>;
template class QZSTLIter<ConstIterGuts<std::deque<qzisstream>>>;

}  // namespace QZSystem
