#include "qz/system/data/basedata.h"

namespace QZSystem {

template class QZBaseDataT<bool>;
template class QZBaseDataT<int>;
template class QZBaseDataT<float>;
template class QZBaseDataT<double>;
template class QZBaseDataT<const char*>;
template class QZBaseDataT<std::string>;

template class QZBaseDataT<std::vector<bool>>;
template class QZBaseDataT<std::vector<char>>;
template class QZBaseDataT<std::vector<unsigned char>>;
template class QZBaseDataT<std::vector<short>>;
template class QZBaseDataT<std::vector<unsigned short>>;
template class QZBaseDataT<std::vector<int>>;
template class QZBaseDataT<std::vector<unsigned int>>;
template class QZBaseDataT<std::vector<float>>;
template class QZBaseDataT<std::vector<double>>;
template class QZBaseDataT<std::vector<QZHalfFloat>>;
template class QZBaseDataT<std::vector<std::string>>;

template class QZBaseDataTPtr<bool*>;
template class QZBaseDataTPtr<char*>;
template class QZBaseDataTPtr<unsigned char*>;
template class QZBaseDataTPtr<int*>;
template class QZBaseDataTPtr<unsigned int*>;
template class QZBaseDataTPtr<float*>;
template class QZBaseDataTPtr<double*>;
template class QZBaseDataTPtr<QZHalfFloat*>;

}  // namespace QZSystem
