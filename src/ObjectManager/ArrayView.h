#ifndef DOVWRITER_OBJECTMANAGER_ARRAYVIEW_H
#define DOVWRITER_OBJECTMANAGER_ARRAYVIEW_H

// How the builders see an array of numbers: where the values start and how
// many there are. The object table holds an array either as the copy that
// setValues made (a std::vector<T>) or as the host's own memory that
// lendValues lent (an ArrayView<T>); the builders read both alike.

#include <boost/any.hpp>

#include <cstdint>
#include <vector>

namespace Kel {
namespace Dov {

template <class T>
class ArrayView {
 public:
  ArrayView() = default;
  ArrayView(const T* values, std::uint64_t count) : values(values), count(count) {}
  // Implicit: a vector is read in place, never copied.
  ArrayView(const std::vector<T>& vector) : values(vector.data()), count(vector.size()) {}

  const T* data() const { return values; }
  std::uint64_t size() const { return count; }
  bool empty() const { return count == 0; }
  const T& operator[](std::uint64_t i) const { return values[i]; }
  const T* begin() const { return values; }
  const T* end() const { return values + count; }

 private:
  const T* values = nullptr;
  std::uint64_t count = 0;
};

// The values that `held` (an "Array" property) keeps as T, copied or lent.
// False if it holds anything else; `view` is then left as it was.
template <class T>
bool viewOf(const boost::any& held, ArrayView<T>& view) {
  if (const std::vector<T>* copy = boost::any_cast<std::vector<T>>(&held)) {
    view = *copy;
    return true;
  }
  if (const ArrayView<T>* lent = boost::any_cast<ArrayView<T>>(&held)) {
    view = *lent;
    return true;
  }
  return false;
}

}  // namespace Dov
}  // namespace Kel

#endif
