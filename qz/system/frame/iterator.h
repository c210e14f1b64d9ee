#pragma once

#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "qz/system/frame/iterbase.h"
#include "qz/system/frame/iterempty.h"
#include "qz/system/frame/iterowner.h"
#include "qz/system/frame/iterpred.h"
#include "qz/system/frame/itersorted.h"
#include "qz/system/frame/iterstl.h"
#include "qz/system/frame/itervector.h"

/// All iterators: the interface, the owner, and the family that walks vectors, containers, selections, concatenations
/// and sorted views. Those over plain values and texts are compiled once, with the toolkit; those over classes of the
/// toolkit stand with the class.
namespace QZSystem {

extern template class QZConcatIter<const std::string>;
extern template class QZConcatIter<const std::pair<std::string, std::string>>;
extern template class QZConcatIter<const bool>;
extern template class QZConcatIter<const int>;
extern template class QZConcatIter<const unsigned int>;
extern template class QZConcatIter<const float>;
extern template class QZConcatIter<const double>;

extern template class QZSTLIter<ConstIterGuts<std::vector<std::string>>>;
extern template class QZSTLIter<ConstIterGuts<std::vector<std::pair<std::string, std::string>>>>;
extern template class QZSTLIter<ConstIterGuts<std::deque<std::string>>>;
extern template class QZSTLIter<ConstIterGuts<std::deque<bool>>>;
extern template class QZSTLIter<ConstIterGuts<std::deque<int>>>;
extern template class QZSTLIter<ConstIterGuts<std::deque<unsigned int>>>;
extern template class QZSTLIter<ConstIterGuts<std::deque<float>>>;
extern template class QZSTLIter<ConstIterGuts<std::deque<double>>>;

extern template class QZSTLCacheIter<ConstIterGuts<std::vector<bool>>>;

}  // namespace QZSystem
