#include "QorArray.h"

namespace
{
// The probe never visits index 0 or count - 1 once the bisection starts; callers rely on
// that exact answer, so the loop is kept as it is rather than replaced by std::lower_bound.
template <typename V>
int HalfSearch(const V* values, int count, V key)
{
    if (count < 1 || !values)
        return -1;
    if (key < values[0] || key > values[count - 1])
        return -1;
    if (count <= 3)
    {
        for (int i = 0; i < count; ++i)
            if (values[i] == key)
                return i;
        return -1;
    }
    int lo = 0;
    int hi = count - 1;
    int mid = hi / 2;
    do
    {
        if (key < values[mid])
        {
            hi = mid;
            mid = (mid + lo) / 2;
        }
        else if (key == values[mid])
        {
            return mid;
        }
        else
        {
            lo = mid;
            mid = (mid + hi) / 2;
        }
    } while (lo < hi - 1);
    return -1;
}
} // namespace

int halfSearch(short* values, int count, short key)
{
    return HalfSearch<short>(values, count, key);
}

int halfSearch(long* values, int count, long key)
{
    return HalfSearch<long>(values, count, key);
}
