// Core containers and value types: errors, growable arrays, halfSearch, cyclic lists, rectangles,
// handles and dates, including the persisted forms of the value types.
#include "qor/files.h"

#include "test_util.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <ctime>
#include <new>
#include <string>
#include <vector>

namespace
{
using Bytes = std::vector<std::uint8_t>;

// 2^32: one element more than a 32-bit size can count.
constexpr unsigned long kTooMany = 4294967296UL;

// Element type that counts its constructions, destructions and assignments.
struct Counted
{
    static int live;
    static int constructed;
    static int destroyed;
    static int assigned;
    static void ResetCounts() { live = constructed = destroyed = assigned = 0; }

    Counted() { Born(); }
    explicit Counted(int v) : value(v) { Born(); }
    Counted(const Counted& o) : value(o.value) { Born(); }
    Counted& operator=(const Counted& o)
    {
        value = o.value;
        ++assigned;
        return *this;
    }
    ~Counted()
    {
        --live;
        ++destroyed;
    }
    bool operator==(const Counted& o) const { return value == o.value; }
    static void Born()
    {
        ++live;
        ++constructed;
    }

    int value = 0;
};
int Counted::live = 0;
int Counted::constructed = 0;
int Counted::destroyed = 0;
int Counted::assigned = 0;

UCharArray Bytes8(const char* text)
{
    return UCharArray(reinterpret_cast<const unsigned char*>(text), std::strlen(text));
}

std::string Text(const UCharArray& a)
{
    return std::string(reinterpret_cast<const char*>(static_cast<unsigned char*>(a)), a.GetSize());
}

UCharArray AppendedOneByOne(const char* text)
{
    UCharArray a;
    for (const char* p = text; *p; ++p)
        a.Append(static_cast<unsigned char>(*p));
    return a;
}

// The ring read from the head following Next(); the current position is restored afterwards.
// Also checks that one more step closes the ring at the head.
template <typename T>
std::vector<T> Forward(Cycle<T>& c)
{
    std::vector<T> out;
    void* here = c.GetAddress();
    if (!c.GotoAddress(9))
        return out;
    T* head = c.GetInfo();
    out.push_back(*head);
    for (unsigned long i = 1; i < c.GetSize(); ++i)
        out.push_back(*c.Next());
    EXPECT_EQ(c.Next(), head);
    if (here)
        c.GotoAddress(here);
    else
        c.ForgetAddress(8);
    return out;
}

// The ring read from the head following Prev(); the current position is restored afterwards.
template <typename T>
std::vector<T> Backward(Cycle<T>& c)
{
    std::vector<T> out;
    void* here = c.GetAddress();
    if (!c.GotoAddress(9))
        return out;
    T* head = c.GetInfo();
    out.push_back(*head);
    for (unsigned long i = 1; i < c.GetSize(); ++i)
        out.push_back(*c.Prev());
    EXPECT_EQ(c.Prev(), head);
    if (here)
        c.GotoAddress(here);
    else
        c.ForgetAddress(8);
    return out;
}

std::vector<char> Chars(const char* text)
{
    return std::vector<char>(text, text + std::strlen(text));
}

Cycle<char> AddAll(const char* text)
{
    Cycle<char> c;
    for (const char* p = text; *p; ++p)
        c.Add(*p);
    return c;
}

// Moves to the first node holding value, starting from the head.
template <typename T>
bool GoTo(Cycle<T>& c, const T& value)
{
    if (!c.GotoAddress(9))
        return false;
    for (unsigned long i = 0; i < c.GetSize(); ++i, c.Next())
        if (*c.GetInfo() == value)
            return true;
    return false;
}

template <typename Save>
Bytes SavedBytes(const std::string& path, Save save)
{
    QorFile file;
    EXPECT_TRUE(file.Open(path.c_str(), QorFile::kWrite));
    save(file);
    file.Close();
    return qortest::ReadAll(path);
}

template <typename Load>
void LoadFrom(const std::string& path, const Bytes& bytes, Load load)
{
    qortest::WriteAll(path, bytes);
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), QorFile::kRead));
    load(file);
    file.Close();
}
} // namespace

// ---------------------------------------------------------------------------------------------
// Errors
// ---------------------------------------------------------------------------------------------

TEST(TREE_ERR, HoldsTheElevenTreeErrorTexts)
{
    EXPECT_STREQ(TREE_ERR[0], "No Last Error.");
    EXPECT_STREQ(TREE_ERR[1], "No Next Node !!");
    EXPECT_STREQ(TREE_ERR[2], "No Parent Node !!");
    EXPECT_STREQ(TREE_ERR[3], "No Child Node !!");
    EXPECT_STREQ(TREE_ERR[4], "Insert Error! No Parent Node.");
    EXPECT_STREQ(TREE_ERR[5], "Root CANNOT be Removed !");
    EXPECT_STREQ(TREE_ERR[6], "No prev Node !!");
    EXPECT_STREQ(TREE_ERR[7], "MOVETO out of range");
    EXPECT_STREQ(TREE_ERR[8], "Reserved");
    EXPECT_STREQ(TREE_ERR[9], "Reserved");
    EXPECT_STREQ(TREE_ERR[10], "Unexpected Error.");
    EXPECT_EQ(sizeof(TREE_ERR) / sizeof(TREE_ERR[0]), 11u);
}

TEST(QorObj, NewObjectHasNoErrorAndSetExceptionStoresTheCode)
{
    QorObj obj;
    EXPECT_EQ(obj.GetException(), 0);
    obj.SetException(4);
    EXPECT_EQ(obj.GetException(), 4);
    obj.SetException(-7);
    EXPECT_EQ(obj.GetException(), -7);
}

TEST(QorObj, AssignmentCopiesTheCode)
{
    QorObj a;
    QorObj b;
    a.SetException(4);
    b = a;
    EXPECT_EQ(b.GetException(), 4);
}

TEST(QorObj, CodeStaysAfterALaterSuccessUntilResetWithZero)
{
    UCharArray a;
    EXPECT_FALSE(a.ReSize(kTooMany, 0));
    EXPECT_EQ(a.GetException(), 1);
    EXPECT_TRUE(a.ReSize(3, 0));
    EXPECT_TRUE(a.Append(static_cast<unsigned char>('x')));
    EXPECT_EQ(a.GetException(), 1);
    a.SetException(0);
    EXPECT_EQ(a.GetException(), 0);
}

TEST(QorException, DefaultConstructionZeroesCodeTextAndDetail)
{
    alignas(QorException) unsigned char storage[sizeof(QorException)];
    std::memset(storage, 0xAB, sizeof storage);
    auto* e = new (storage) QorException();
    EXPECT_EQ(e->code, 0);
    EXPECT_EQ(e->detail, 0);
    for (int i = 0; i < QorException::kTextSize; ++i)
        ASSERT_EQ(e->text[i], 0) << "text byte " << i;
    e->~QorException();
}

TEST(QorException, AssignmentCopiesCodeDetailAndAllTwoHundredTextBytes)
{
    QorException src;
    src.code = 12;
    src.detail = -3;
    for (int i = 0; i < QorException::kTextSize; ++i)
        src.text[i] = static_cast<char>(i * 7 + 1);
    src.text[5] = 0; // bytes after a terminator are copied too
    QorException dst;
    dst.code = 99;
    dst = src;
    EXPECT_EQ(dst.code, 12);
    EXPECT_EQ(dst.detail, -3);
    EXPECT_EQ(std::memcmp(dst.text, src.text, QorException::kTextSize), 0);
    EXPECT_EQ(dst.text[199], static_cast<char>(199 * 7 + 1));
}

TEST(QorException, CopyConstructionCopiesTheWholeRecord)
{
    QorException src;
    src.SetException(5);
    src.detail = 77;
    std::memset(src.text, 'q', QorException::kTextSize);
    const QorException copy(src);
    EXPECT_EQ(copy.code, 5);
    EXPECT_EQ(copy.detail, 77);
    EXPECT_EQ(std::memcmp(copy.text, src.text, QorException::kTextSize), 0);
}

TEST(QorException, SetExceptionStoresTheCodeOnly)
{
    QorException e;
    e.detail = 3;
    e.SetException(8);
    EXPECT_EQ(e.code, 8);
    EXPECT_EQ(e.detail, 3);
}

// ---------------------------------------------------------------------------------------------
// UCharArray / Array<T>
// ---------------------------------------------------------------------------------------------

TEST(QorArray, DefaultArrayIsEmptyWithGrowTenAndNoStorage)
{
    const UCharArray a;
    EXPECT_EQ(a.GetSize(), 0u);
    EXPECT_EQ(a.GetMaxSize(), 0u);
    EXPECT_EQ(a.GetGrow(), 10u);
    EXPECT_EQ(static_cast<unsigned char*>(a), nullptr);
    EXPECT_TRUE(a.IsEmpty());
    EXPECT_EQ(a.GetException(), 0);
}

TEST(QorArray, ValueConstructorSetsNBytesToValue)
{
    const UCharArray a(static_cast<unsigned char>('x'), 4);
    EXPECT_EQ(a.GetSize(), 4u);
    EXPECT_EQ(a.GetMaxSize(), 4u);
    EXPECT_EQ(a.GetGrow(), 10u);
    EXPECT_EQ(Text(a), "xxxx");
    EXPECT_FALSE(a.IsEmpty());
}

TEST(QorArray, ValueConstructorWithZeroCountIsEmpty)
{
    const UCharArray a(static_cast<unsigned char>('x'), 0);
    EXPECT_EQ(a.GetSize(), 0u);
    EXPECT_EQ(a.GetMaxSize(), 0u);
    EXPECT_EQ(a.GetGrow(), 10u);
    EXPECT_EQ(static_cast<unsigned char*>(a), nullptr);
}

TEST(QorArray, ValueConstructorBeyondThirtyTwoBitsFailsWithCodeOneAndZeroCounts)
{
    const UCharArray a(static_cast<unsigned char>('x'), kTooMany);
    EXPECT_EQ(a.GetException(), 1);
    EXPECT_EQ(a.GetSize(), 0u);
    EXPECT_EQ(a.GetMaxSize(), 0u);
    EXPECT_EQ(a.GetGrow(), 0u);
    EXPECT_EQ(static_cast<unsigned char*>(a), nullptr);
}

TEST(QorArray, PointerConstructorCopiesTheBytes)
{
    const unsigned char src[] = {1, 2, 0, 250};
    const UCharArray a(src, 4);
    EXPECT_EQ(a.GetSize(), 4u);
    EXPECT_EQ(a.GetMaxSize(), 4u);
    EXPECT_EQ(a.GetGrow(), 10u);
    EXPECT_EQ(a[0], 1);
    EXPECT_EQ(a[2], 0);
    EXPECT_EQ(a[3], 250);
    EXPECT_NE(static_cast<unsigned char*>(a), src);
}

TEST(QorArray, PointerConstructorBeyondThirtyTwoBitsFailsWithCodeOne)
{
    const unsigned char src[] = {1};
    const UCharArray a(src, kTooMany);
    EXPECT_EQ(a.GetException(), 1);
    EXPECT_EQ(a.GetSize(), 0u);
    EXPECT_EQ(a.GetMaxSize(), 0u);
    EXPECT_EQ(static_cast<unsigned char*>(a), nullptr);
}

TEST(QorArray, CopyOfArrayWithGrowFourHasGrowTen)
{
    UCharArray a = Bytes8("abc");
    a.SetGrow(4);
    const UCharArray copy(a);
    EXPECT_EQ(copy.GetGrow(), 10u);
    EXPECT_EQ(a.GetGrow(), 4u);
}

TEST(QorArray, CopyHasSourceSizeAsCapacityAndOwnBytes)
{
    const UCharArray a = AppendedOneByOne("abc"); // size 3, max 10
    ASSERT_EQ(a.GetMaxSize(), 10u);
    UCharArray copy(a);
    EXPECT_EQ(copy.GetSize(), 3u);
    EXPECT_EQ(copy.GetMaxSize(), 3u);
    EXPECT_EQ(Text(copy), "abc");
    copy[0] = 'z';
    EXPECT_EQ(a[0], 'a');
}

TEST(QorArray, AssignmentKeepsTheDestinationGrowStep)
{
    UCharArray a = AppendedOneByOne("hello");
    a.SetGrow(4);
    UCharArray b = Bytes8("xy");
    b.SetGrow(7);
    b = a;
    EXPECT_EQ(b.GetGrow(), 7u);
    EXPECT_EQ(b.GetSize(), 5u);
    EXPECT_EQ(b.GetMaxSize(), 5u);
    EXPECT_EQ(Text(b), "hello");
}

TEST(QorArray, SelfAssignmentChangesNothing)
{
    UCharArray a = AppendedOneByOne("abcd");
    unsigned char* before = a;
    UCharArray& alias = a;
    a = alias;
    EXPECT_EQ(static_cast<unsigned char*>(a), before);
    EXPECT_EQ(a.GetSize(), 4u);
    EXPECT_EQ(a.GetMaxSize(), 10u);
    EXPECT_EQ(Text(a), "abcd");
}

TEST(QorArray, AssigningAValueLeavesOneElement)
{
    UCharArray a = Bytes8("abcdef");
    a = static_cast<unsigned char>('q');
    EXPECT_EQ(a.GetSize(), 1u);
    EXPECT_EQ(a.GetMaxSize(), 1u);
    EXPECT_EQ(a[0], 'q');
}

TEST(QorArray, EqualityNeedsEqualSizesAndEqualBytes)
{
    const UCharArray abc = Bytes8("abc");
    EXPECT_TRUE(abc == Bytes8("abc"));
    EXPECT_FALSE(abc != Bytes8("abc"));
    EXPECT_FALSE(abc == Bytes8("abd"));
    EXPECT_TRUE(abc != Bytes8("abd"));
    EXPECT_FALSE(abc == Bytes8("ab"));
    EXPECT_FALSE(abc == Bytes8("abcd"));
}

TEST(QorArray, EqualityIgnoresCapacityAndGrowStep)
{
    UCharArray a = AppendedOneByOne("abc"); // max 10
    a.SetGrow(3);
    const UCharArray b = Bytes8("abc"); // max 3
    EXPECT_TRUE(a == b);
}

TEST(QorArray, TwoEmptyArraysAreEqual)
{
    UCharArray a;
    UCharArray b = Bytes8("abc");
    b.Empty();
    EXPECT_TRUE(a == b);
    EXPECT_TRUE(a == UCharArray());
}

TEST(QorArray, SetGrowZeroLeavesTheGrowStep)
{
    UCharArray a;
    a.SetGrow(0);
    EXPECT_EQ(a.GetGrow(), 10u);
    a.SetGrow(3);
    EXPECT_EQ(a.GetGrow(), 3u);
    a.SetGrow(0);
    EXPECT_EQ(a.GetGrow(), 3u);
}

TEST(QorArray, ResetReplacesContentAndRestoresGrowTen)
{
    UCharArray a = AppendedOneByOne("old text");
    a.SetGrow(4);
    const unsigned char src[] = {'n', 'e', 'w'};
    EXPECT_TRUE(a.Reset(src, 3));
    EXPECT_EQ(a.GetSize(), 3u);
    EXPECT_EQ(a.GetMaxSize(), 3u);
    EXPECT_EQ(a.GetGrow(), 10u);
    EXPECT_EQ(Text(a), "new");
}

TEST(QorArray, ResetBeyondThirtyTwoBitsReturnsFalseWithCodeOneAndZeroCounts)
{
    UCharArray a = Bytes8("abc");
    const unsigned char src[] = {1};
    EXPECT_FALSE(a.Reset(src, kTooMany));
    EXPECT_EQ(a.GetException(), 1);
    EXPECT_EQ(a.GetSize(), 0u);
    EXPECT_EQ(a.GetMaxSize(), 0u);
    EXPECT_EQ(a.GetGrow(), 0u);
    EXPECT_EQ(static_cast<unsigned char*>(a), nullptr);
}

TEST(QorArray, ReSizeToZeroFreesTheStorage)
{
    UCharArray a = Bytes8("abc");
    EXPECT_TRUE(a.ReSize(0, 1));
    EXPECT_EQ(a.GetSize(), 0u);
    EXPECT_EQ(a.GetMaxSize(), 0u);
    EXPECT_EQ(static_cast<unsigned char*>(a), nullptr);
    EXPECT_TRUE(a.IsEmpty());
}

TEST(QorArray, ReSizeFiveWithKeepOnEightBytesKeepsTheFirstFive)
{
    UCharArray a = Bytes8("abcdefgh");
    EXPECT_TRUE(a.ReSize(5, 1));
    EXPECT_EQ(a.GetSize(), 5u);
    EXPECT_EQ(a.GetMaxSize(), 5u);
    EXPECT_EQ(Text(a), "abcde");
}

TEST(QorArray, ReSizeEightWithKeepOnEightBytesKeepsTheBuffer)
{
    UCharArray a = Bytes8("abcdefgh");
    unsigned char* before = a;
    EXPECT_TRUE(a.ReSize(8, 1));
    EXPECT_EQ(static_cast<unsigned char*>(a), before);
    EXPECT_EQ(Text(a), "abcdefgh");
}

TEST(QorArray, ReSizeToCurrentSizeWithKeepLeavesSpareCapacity)
{
    UCharArray a = AppendedOneByOne("abc"); // size 3, max 10
    EXPECT_TRUE(a.ReSize(3, 1));
    EXPECT_EQ(a.GetMaxSize(), 10u);
}

TEST(QorArray, ReSizeToCurrentSizeWithoutKeepAllocatesExactly)
{
    UCharArray a = AppendedOneByOne("abc"); // size 3, max 10
    EXPECT_TRUE(a.ReSize(3, 0));
    EXPECT_EQ(a.GetSize(), 3u);
    EXPECT_EQ(a.GetMaxSize(), 3u);
}

TEST(QorArray, ReSizeLargerWithKeepCopiesEverythingAndSetsSizeAndMax)
{
    UCharArray a = AppendedOneByOne("abc");
    EXPECT_TRUE(a.ReSize(12, 1));
    EXPECT_EQ(a.GetSize(), 12u);
    EXPECT_EQ(a.GetMaxSize(), 12u);
    EXPECT_EQ(a[0], 'a');
    EXPECT_EQ(a[1], 'b');
    EXPECT_EQ(a[2], 'c');
}

TEST(QorArray, ReSizeBeyondThirtyTwoBitsReturnsFalseAndLeavesArrayUnchanged)
{
    UCharArray a = AppendedOneByOne("abc");
    unsigned char* before = a;
    EXPECT_FALSE(a.ReSize(kTooMany, 1));
    EXPECT_EQ(a.GetException(), 1);
    EXPECT_EQ(static_cast<unsigned char*>(a), before);
    EXPECT_EQ(a.GetSize(), 3u);
    EXPECT_EQ(a.GetMaxSize(), 10u);
    EXPECT_EQ(a.GetGrow(), 10u);
    EXPECT_EQ(Text(a), "abc");
}

TEST(QorArray, EmptyReleasesTheStorage)
{
    UCharArray a = Bytes8("abc");
    a.Empty();
    EXPECT_EQ(a.GetSize(), 0u);
    EXPECT_EQ(a.GetMaxSize(), 0u);
    EXPECT_EQ(static_cast<unsigned char*>(a), nullptr);
}

TEST(QorArray, FreeExtraShrinksCapacityToSizeAndKeepsContent)
{
    UCharArray a = AppendedOneByOne("abcd");
    ASSERT_EQ(a.GetMaxSize(), 10u);
    a.FreeExtra();
    EXPECT_EQ(a.GetSize(), 4u);
    EXPECT_EQ(a.GetMaxSize(), 4u);
    EXPECT_EQ(Text(a), "abcd");
}

TEST(QorArray, FreeExtraOnFullArrayKeepsTheBuffer)
{
    UCharArray a = Bytes8("abcd");
    unsigned char* before = a;
    a.FreeExtra();
    EXPECT_EQ(static_cast<unsigned char*>(a), before);
    EXPECT_EQ(a.GetMaxSize(), 4u);
}

TEST(QorArray, FreeExtraWithoutStorageDoesNothing)
{
    UCharArray a;
    a.FreeExtra();
    EXPECT_EQ(static_cast<unsigned char*>(a), nullptr);
    EXPECT_EQ(a.GetMaxSize(), 0u);
}

TEST(QorArray, SwapWithIndexZeroIsRefusedAndChangesNothing)
{
    UCharArray a = Bytes8("abc");
    EXPECT_FALSE(a.Swap(0, 1));
    EXPECT_FALSE(a.Swap(1, 0));
    EXPECT_EQ(Text(a), "abc");
}

TEST(QorArray, SwapOneTwoOnThreeBytesExchangesThem)
{
    UCharArray a = Bytes8("abc");
    EXPECT_TRUE(a.Swap(1, 2));
    EXPECT_EQ(Text(a), "acb");
}

TEST(QorArray, SwapWithIndexAtOrPastSizeIsRefused)
{
    UCharArray a = AppendedOneByOne("abc"); // capacity 10, size 3
    EXPECT_FALSE(a.Swap(1, 3));
    EXPECT_FALSE(a.Swap(3, 2));
    EXPECT_EQ(Text(a), "abc");
}

TEST(QorArray, OneByteAppendToNewArrayGivesSizeOneCapacityTen)
{
    UCharArray a;
    EXPECT_TRUE(a.Append(static_cast<unsigned char>('z')));
    EXPECT_EQ(a.GetSize(), 1u);
    EXPECT_EQ(a.GetMaxSize(), 10u);
    EXPECT_EQ(a[0], 'z');
}

TEST(QorArray, ElevenSingleByteAppendsGrowCapacityToTwenty)
{
    UCharArray a = AppendedOneByOne("0123456789");
    EXPECT_EQ(a.GetMaxSize(), 10u);
    EXPECT_TRUE(a.Append(static_cast<unsigned char>('A')));
    EXPECT_EQ(a.GetSize(), 11u);
    EXPECT_EQ(a.GetMaxSize(), 20u);
    EXPECT_EQ(Text(a), "0123456789A");
}

TEST(QorArray, TwentyFiveBytesIntoEmptyArrayGiveCapacityThirty)
{
    const std::string src(25, 'k');
    UCharArray a;
    EXPECT_TRUE(a.Append(reinterpret_cast<const unsigned char*>(src.data()), 25));
    EXPECT_EQ(a.GetSize(), 25u);
    EXPECT_EQ(a.GetMaxSize(), 30u);
    EXPECT_EQ(Text(a), src);
}

TEST(QorArray, GrowthIsOldSizePlusRoundedStepNotOldMaxPlusStep)
{
    UCharArray a = AppendedOneByOne("12345678"); // size 8, max 10
    const unsigned char five[] = {'a', 'b', 'c', 'd', 'e'};
    EXPECT_TRUE(a.Append(five, 5));
    EXPECT_EQ(a.GetSize(), 13u);
    EXPECT_EQ(a.GetMaxSize(), 18u);
    EXPECT_EQ(Text(a), "12345678abcde");
}

TEST(QorArray, GrowthRoundsToTheCurrentGrowStep)
{
    UCharArray a;
    a.SetGrow(4);
    const unsigned char src[] = {1, 2, 3, 4, 5};
    EXPECT_TRUE(a.Append(src, 5)); // step 8
    EXPECT_EQ(a.GetMaxSize(), 8u);
    EXPECT_TRUE(a.Append(src, 1)); // fits
    EXPECT_EQ(a.GetSize(), 6u);
    EXPECT_EQ(a.GetMaxSize(), 8u);
    EXPECT_TRUE(a.Append(src, 3)); // 2 free < 3: 6 + 4
    EXPECT_EQ(a.GetSize(), 9u);
    EXPECT_EQ(a.GetMaxSize(), 10u);
    EXPECT_EQ(a.GetGrow(), 4u);
    EXPECT_EQ(a[8], 3);
}

TEST(QorArray, AppendWithinCapacityKeepsTheBuffer)
{
    UCharArray a = AppendedOneByOne("ab");
    unsigned char* before = a;
    EXPECT_TRUE(a.Append(static_cast<unsigned char>('c')));
    EXPECT_EQ(static_cast<unsigned char*>(a), before);
    EXPECT_EQ(Text(a), "abc");
}

TEST(QorArray, AppendOfZeroBytesSucceedsAndChangesNothing)
{
    UCharArray a = Bytes8("abc");
    const unsigned char src[] = {9};
    EXPECT_TRUE(a.Append(src, 0));
    EXPECT_EQ(a.GetSize(), 3u);
    EXPECT_EQ(a.GetMaxSize(), 3u);
}

TEST(QorArray, AppendArrayAddsItsBytes)
{
    UCharArray a = Bytes8("abc");
    EXPECT_TRUE(a.Append(Bytes8("de")));
    EXPECT_EQ(Text(a), "abcde");
    EXPECT_EQ(a.GetMaxSize(), 13u);
}

TEST(QorArray, AppendFromInsideOwnStorageCopiesBeforeGrowing)
{
    UCharArray a = Bytes8("abc"); // full: the append must move the storage
    EXPECT_TRUE(a.Append(static_cast<const unsigned char*>(a), 3));
    EXPECT_EQ(Text(a), "abcabc");
    EXPECT_EQ(a.GetMaxSize(), 13u);
}

TEST(QorArray, AppendOfOwnElementWhenFullAppendsItsValue)
{
    UCharArray a = Bytes8("xyz");
    EXPECT_TRUE(a.Append(a[1]));
    EXPECT_EQ(Text(a), "xyzy");
}

TEST(QorArray, AppendOfArrayToItselfDoublesIt)
{
    UCharArray a = AppendedOneByOne("abcdef"); // max 10: the append must grow
    EXPECT_TRUE(a.Append(a));
    EXPECT_EQ(Text(a), "abcdefabcdef");
    EXPECT_EQ(a.GetMaxSize(), 16u);
}

TEST(QorArray, AppendBeyondThirtyTwoBitsFailsAndLeavesArrayUnchanged)
{
    UCharArray a = AppendedOneByOne("abc");
    const unsigned char src[] = {1};
    EXPECT_FALSE(a.Append(src, kTooMany));
    EXPECT_EQ(a.GetException(), 1);
    EXPECT_EQ(a.GetSize(), 3u);
    EXPECT_EQ(a.GetMaxSize(), 10u);
    EXPECT_EQ(Text(a), "abc");
}

TEST(QorArray, RemoveMovesLaterBytesDownAndKeepsCapacity)
{
    UCharArray a = Bytes8("abcde");
    EXPECT_TRUE(a.Remove(1));
    EXPECT_EQ(Text(a), "acde");
    EXPECT_EQ(a.GetMaxSize(), 5u);
    EXPECT_TRUE(a.Remove(0));
    EXPECT_EQ(Text(a), "cde");
}

TEST(QorArray, RemoveAtOrPastSizeIsRefused)
{
    UCharArray a = AppendedOneByOne("abc");
    EXPECT_FALSE(a.Remove(3));
    EXPECT_FALSE(a.Remove(100));
    EXPECT_EQ(Text(a), "abc");
}

TEST(QorArray, RemoveWithoutIndexDropsTheLastByte)
{
    UCharArray a = Bytes8("abc");
    EXPECT_TRUE(a.Remove());
    EXPECT_EQ(Text(a), "ab");
    EXPECT_EQ(a.GetMaxSize(), 3u);
}

TEST(QorArray, RemoveWithoutIndexOnEmptyArrayReturnsFalse)
{
    UCharArray a;
    EXPECT_FALSE(a.Remove());
    EXPECT_EQ(a.GetSize(), 0u);
    UCharArray b = Bytes8("a");
    EXPECT_TRUE(b.Remove());
    EXPECT_FALSE(b.Remove());
}

TEST(QorArray, FillSetsOnlyTheBytesInUse)
{
    UCharArray a = Bytes8("abcd");
    a.Remove(); // "abc" with 'd' still in the capacity
    a.Fill(static_cast<unsigned char>('z'));
    EXPECT_EQ(Text(a), "zzz");
    EXPECT_EQ(static_cast<unsigned char*>(a)[3], 'd');
}

TEST(QorArray, IndexingWritesThroughToTheStorage)
{
    UCharArray a = Bytes8("abc");
    a[1] = 'X';
    EXPECT_EQ(static_cast<unsigned char*>(a)[1], 'X');
    EXPECT_EQ(Text(a), "aXc");
}

TEST(QorArrayOfClass, ElementsAreConstructedAndDestroyedAsAWhole)
{
    Counted::ResetCounts();
    {
        Array<Counted> a;
        EXPECT_TRUE(a.ReSize(4, 0));
        EXPECT_EQ(Counted::live, 4);
        a.Empty();
        EXPECT_EQ(Counted::live, 0);
        EXPECT_TRUE(a.Append(Counted(5)));
        EXPECT_EQ(Counted::live, 10); // the whole capacity is constructed
        EXPECT_EQ(a[0].value, 5);
    }
    EXPECT_EQ(Counted::live, 0);
    EXPECT_EQ(Counted::constructed, Counted::destroyed);
}

TEST(QorArrayOfClass, ValueConstructorAssignsTheValueToEveryElement)
{
    Counted::ResetCounts();
    {
        const Counted seven(7);
        const Array<Counted> a(seven, 3);
        EXPECT_EQ(a.GetSize(), 3u);
        EXPECT_EQ(a[0].value, 7);
        EXPECT_EQ(a[2].value, 7);
        EXPECT_EQ(Counted::live, 4);
        EXPECT_EQ(Counted::assigned, 3);
    }
    EXPECT_EQ(Counted::live, 0);
}

TEST(QorArrayOfClass, ReSizeWithKeepCopiesByAssignmentIntoDefaultElements)
{
    Counted::ResetCounts();
    {
        Array<Counted> a;
        a.Append(Counted(1));
        a.Append(Counted(2));
        a.Append(Counted(3));
        Counted::assigned = 0;
        EXPECT_TRUE(a.ReSize(2, 1));
        EXPECT_EQ(Counted::assigned, 2);
        EXPECT_EQ(Counted::live, 2);
        EXPECT_EQ(a[0].value, 1);
        EXPECT_EQ(a[1].value, 2);
    }
    EXPECT_EQ(Counted::live, 0);
}

TEST(QorArrayOfClass, ReSizeOfStringsKeepsPrefixAndDefaultsTheRest)
{
    Array<std::string> a;
    a.Append(std::string("one"));
    a.Append(std::string("two"));
    a.Append(std::string("three"));
    EXPECT_TRUE(a.ReSize(4, 1));
    EXPECT_EQ(a.GetSize(), 4u);
    EXPECT_EQ(a[0], "one");
    EXPECT_EQ(a[2], "three");
    EXPECT_EQ(a[3], "");
    EXPECT_TRUE(a.ReSize(2, 0));
    EXPECT_EQ(a[0], "");
    EXPECT_EQ(a[1], "");
}

TEST(QorArrayOfClass, ElevenStringAppendsGrowCapacityToTwenty)
{
    Array<std::string> a;
    for (int i = 0; i < 11; ++i)
        a.Append(std::to_string(i * 11));
    EXPECT_EQ(a.GetSize(), 11u);
    EXPECT_EQ(a.GetMaxSize(), 20u);
    EXPECT_EQ(a[0], "0");
    EXPECT_EQ(a[9], "99");
    EXPECT_EQ(a[10], "110");
}

TEST(QorArrayOfClass, AppendOfOwnStringElementWhenFullCopiesIt)
{
    const std::string src[] = {"alpha", "beta"};
    Array<std::string> a(src, 2);
    EXPECT_TRUE(a.Append(a[0]));
    EXPECT_EQ(a.GetSize(), 3u);
    EXPECT_EQ(a[2], "alpha");
}

TEST(QorArrayOfClass, CopyAssignmentAndEqualityUseElementValues)
{
    const std::string src[] = {"a", "bb", "ccc"};
    Array<std::string> a(src, 3);
    a.SetGrow(5);
    Array<std::string> copy(a);
    EXPECT_EQ(copy.GetGrow(), 10u);
    EXPECT_TRUE(copy == a);
    copy[1] = "xx";
    EXPECT_TRUE(copy != a);
    Array<std::string> assigned;
    assigned.SetGrow(3);
    assigned = a;
    EXPECT_TRUE(assigned == a);
    EXPECT_EQ(assigned.GetGrow(), 3u);
}

TEST(QorArrayOfClass, RemoveSwapAndFillWorkOnStrings)
{
    const std::string src[] = {"a", "b", "c", "d"};
    Array<std::string> a(src, 4);
    EXPECT_TRUE(a.Remove(1));
    EXPECT_EQ(a.GetSize(), 3u);
    EXPECT_EQ(a[1], "c");
    EXPECT_FALSE(a.Swap(0, 2));
    EXPECT_TRUE(a.Swap(1, 2));
    EXPECT_EQ(a[1], "d");
    EXPECT_EQ(a[2], "c");
    a.Fill(std::string("f"));
    EXPECT_EQ(a[0], "f");
    EXPECT_EQ(a[2], "f");
}

TEST(QorArrayOfClass, ErasedElementsAreReleasedByRemoveAndDestructor)
{
    Counted::ResetCounts();
    {
        Array<Counted> a(Counted(1), 3);
        EXPECT_TRUE(a.Remove());
        EXPECT_TRUE(a.Remove());
        EXPECT_EQ(a.GetSize(), 1u);
        EXPECT_EQ(Counted::live, 3); // capacity is kept
    }
    EXPECT_EQ(Counted::live, 0);
    EXPECT_EQ(Counted::constructed, Counted::destroyed);
}

// ---------------------------------------------------------------------------------------------
// halfSearch
// ---------------------------------------------------------------------------------------------

TEST(halfSearch, OverOneToFiveShortsFindsInnerValuesButNotTheEnds)
{
    short v[] = {1, 2, 3, 4, 5};
    EXPECT_EQ(halfSearch(v, 5, short(2)), 1);
    EXPECT_EQ(halfSearch(v, 5, short(3)), 2);
    EXPECT_EQ(halfSearch(v, 5, short(4)), 3);
    EXPECT_EQ(halfSearch(v, 5, short(1)), -1);
    EXPECT_EQ(halfSearch(v, 5, short(5)), -1);
}

TEST(halfSearch, OverOneToFiveLongsFindsInnerValuesButNotTheEnds)
{
    long v[] = {1, 2, 3, 4, 5};
    EXPECT_EQ(halfSearch(v, 5, 2L), 1);
    EXPECT_EQ(halfSearch(v, 5, 3L), 2);
    EXPECT_EQ(halfSearch(v, 5, 4L), 3);
    EXPECT_EQ(halfSearch(v, 5, 1L), -1);
    EXPECT_EQ(halfSearch(v, 5, 5L), -1);
}

TEST(halfSearch, OverThreeValuesFindsAllThree)
{
    short s[] = {1, 2, 3};
    EXPECT_EQ(halfSearch(s, 3, short(1)), 0);
    EXPECT_EQ(halfSearch(s, 3, short(2)), 1);
    EXPECT_EQ(halfSearch(s, 3, short(3)), 2);
    long l[] = {1, 2, 3};
    EXPECT_EQ(halfSearch(l, 3, 1L), 0);
    EXPECT_EQ(halfSearch(l, 3, 2L), 1);
    EXPECT_EQ(halfSearch(l, 3, 3L), 2);
}

TEST(halfSearch, OneAndTwoValuesAreSearchedLinearly)
{
    short one[] = {7};
    EXPECT_EQ(halfSearch(one, 1, short(7)), 0);
    EXPECT_EQ(halfSearch(one, 1, short(8)), -1);
    long two[] = {-4, 9};
    EXPECT_EQ(halfSearch(two, 2, -4L), 0);
    EXPECT_EQ(halfSearch(two, 2, 9L), 1);
    EXPECT_EQ(halfSearch(two, 2, 0L), -1);
}

TEST(halfSearch, FourValuesFindOnlyTheMiddleTwo)
{
    short v[] = {10, 20, 30, 40};
    EXPECT_EQ(halfSearch(v, 4, short(20)), 1);
    EXPECT_EQ(halfSearch(v, 4, short(30)), 2);
    EXPECT_EQ(halfSearch(v, 4, short(10)), -1);
    EXPECT_EQ(halfSearch(v, 4, short(40)), -1);
}

TEST(halfSearch, KeysOutsideTheRangeReturnMinusOne)
{
    short s[] = {-5, 0, 5, 10, 15};
    EXPECT_EQ(halfSearch(s, 5, short(-6)), -1);
    EXPECT_EQ(halfSearch(s, 5, short(16)), -1);
    long l[] = {100, 200};
    EXPECT_EQ(halfSearch(l, 2, 99L), -1);
    EXPECT_EQ(halfSearch(l, 2, 201L), -1);
}

TEST(halfSearch, MissingKeyInsideTheRangeReturnsMinusOne)
{
    short s[] = {10, 20, 30, 40, 50, 60, 70};
    EXPECT_EQ(halfSearch(s, 7, short(25)), -1);
    EXPECT_EQ(halfSearch(s, 7, short(65)), -1);
    EXPECT_EQ(halfSearch(s, 7, short(20)), 1);
    EXPECT_EQ(halfSearch(s, 7, short(60)), 5);
    long l[] = {1, 3, 5};
    EXPECT_EQ(halfSearch(l, 3, 4L), -1);
}

TEST(halfSearch, CountBelowOneReturnsMinusOneWithoutReading)
{
    EXPECT_EQ(halfSearch(static_cast<short*>(nullptr), 0, short(1)), -1);
    EXPECT_EQ(halfSearch(static_cast<long*>(nullptr), -3, 1L), -1);
}

TEST(halfSearch, HundredEvenLongsFindEveryInteriorValueAtItsIndex)
{
    std::vector<long> v;
    for (long i = 0; i < 100; ++i)
        v.push_back(i * 2 + 5000000000L);
    for (int i = 1; i < 99; ++i)
        EXPECT_EQ(halfSearch(v.data(), 100, v[i]), i) << "index " << i;
    EXPECT_EQ(halfSearch(v.data(), 100, v[0]), -1);
    EXPECT_EQ(halfSearch(v.data(), 100, v[99]), -1);
    EXPECT_EQ(halfSearch(v.data(), 100, v[50] + 1), -1);
}

TEST(halfSearch, NegativeShortsAreSearchedWithSignedComparisons)
{
    std::vector<short> v;
    for (short i = -30; i <= 30; i += 3)
        v.push_back(i);
    const int count = static_cast<int>(v.size());
    for (int i = 1; i < count - 1; ++i)
        EXPECT_EQ(halfSearch(v.data(), count, v[i]), i) << "index " << i;
    EXPECT_EQ(halfSearch(v.data(), count, short(-29)), -1);
}

// ---------------------------------------------------------------------------------------------
// Cycle / VoidPtrCycle
// ---------------------------------------------------------------------------------------------

TEST(Cycle, EmptyListHasNoInfoAndNoNavigation)
{
    Cycle<char> c;
    EXPECT_EQ(c.GetSize(), 0u);
    EXPECT_EQ(c.GetInfo(), nullptr);
    EXPECT_EQ(c.Next(), nullptr);
    EXPECT_EQ(c.Prev(), nullptr);
    EXPECT_EQ(c.GetAddress(), nullptr);
    EXPECT_FALSE(c.GotoAddress(9));
    EXPECT_FALSE(c.GotoAddress(8));
}

TEST(Cycle, FirstNodeLinksToItselfBothWays)
{
    Cycle<char> c;
    EXPECT_EQ(c.Insert('a'), 1u);
    char* a = c.GetInfo();
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(*a, 'a');
    EXPECT_EQ(c.Next(), a);
    EXPECT_EQ(c.Prev(), a);
    EXPECT_TRUE(c.GotoAddress(9));
    EXPECT_EQ(c.GetInfo(), a);
}

TEST(Cycle, AddsFromEmptyFormRingABCWithHeadAAndCurrentC)
{
    Cycle<char> c;
    EXPECT_EQ(c.Add('a'), 1u);
    EXPECT_EQ(c.Add('b'), 2u);
    EXPECT_EQ(c.Add('c'), 3u);
    EXPECT_EQ(*c.GetInfo(), 'c');
    EXPECT_EQ(Forward(c), Chars("abc"));
    EXPECT_EQ(Backward(c), Chars("acb"));
    EXPECT_TRUE(c.GotoAddress(9));
    EXPECT_EQ(*c.GetInfo(), 'a');
}

TEST(Cycle, InsertsFromEmptyFormRingACBWithCurrentC)
{
    Cycle<char> c;
    EXPECT_EQ(c.Insert('a'), 1u);
    EXPECT_EQ(c.Insert('b'), 2u);
    EXPECT_EQ(c.Insert('c'), 3u);
    EXPECT_EQ(*c.GetInfo(), 'c');
    EXPECT_EQ(Forward(c), Chars("acb"));
    EXPECT_EQ(Backward(c), Chars("abc"));
}

TEST(Cycle, SecondNodeLinksBothWaysToTheFirstAndHeadStays)
{
    Cycle<char> c;
    c.Insert('a');
    c.Insert('b');
    EXPECT_EQ(*c.GetInfo(), 'b');
    EXPECT_EQ(*c.Next(), 'a');
    EXPECT_EQ(*c.Next(), 'b');
    EXPECT_EQ(*c.Prev(), 'a');
    EXPECT_EQ(*c.Prev(), 'b');
    EXPECT_TRUE(c.GotoAddress(9));
    EXPECT_EQ(*c.GetInfo(), 'a');
}

TEST(Cycle, AddLinksAfterTheCurrentNodeInALongerRing)
{
    Cycle<char> c = AddAll("abcd");
    ASSERT_TRUE(GoTo(c, 'b'));
    EXPECT_EQ(c.Add('x'), 5u);
    EXPECT_EQ(*c.GetInfo(), 'x');
    EXPECT_EQ(Forward(c), Chars("abxcd"));
    EXPECT_EQ(Backward(c), Chars("adcxb"));
}

TEST(Cycle, InsertLinksBeforeTheCurrentNodeInALongerRing)
{
    Cycle<char> c = AddAll("abcd");
    ASSERT_TRUE(GoTo(c, 'c'));
    EXPECT_EQ(c.Insert('x'), 5u);
    EXPECT_EQ(*c.GetInfo(), 'x');
    EXPECT_EQ(Forward(c), Chars("abxcd"));
    EXPECT_EQ(Backward(c), Chars("adcxb"));
}

TEST(Cycle, InsertBeforeTheHeadLeavesTheHeadInPlace)
{
    Cycle<char> c = AddAll("abc");
    ASSERT_TRUE(c.GotoAddress(9));
    c.Insert('x');
    EXPECT_EQ(Forward(c), Chars("abcx"));
}

TEST(Cycle, RemoveOnEmptyListReturnsZero)
{
    Cycle<char> c;
    EXPECT_EQ(c.Remove(), 0u);
    EXPECT_EQ(c.GetSize(), 0u);
    EXPECT_EQ(c.GetInfo(), nullptr);
}

TEST(Cycle, RemovingTheOnlyNodeEmptiesTheList)
{
    Cycle<char> c;
    c.Add('a');
    EXPECT_EQ(c.Remove(), 0u);
    EXPECT_EQ(c.GetSize(), 0u);
    EXPECT_EQ(c.GetInfo(), nullptr);
    EXPECT_EQ(c.Next(), nullptr);
    EXPECT_FALSE(c.GotoAddress(9));
    EXPECT_EQ(c.Add('b'), 1u);
    EXPECT_EQ(Forward(c), Chars("b"));
}

TEST(Cycle, RemovingFromTwoLeavesTheOtherNodeLinkedToItself)
{
    Cycle<char> c = AddAll("ab"); // current b
    EXPECT_EQ(c.Remove(), 1u);
    char* a = c.GetInfo();
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(*a, 'a');
    EXPECT_EQ(c.Next(), a);
    EXPECT_EQ(c.Prev(), a);
    EXPECT_TRUE(c.GotoAddress(9));
    EXPECT_EQ(c.GetInfo(), a);
}

TEST(Cycle, RemovingTheHeadFromTwoMakesTheOtherNodeHeadAndCurrent)
{
    Cycle<char> c = AddAll("ab");
    ASSERT_TRUE(c.GotoAddress(9));
    EXPECT_EQ(c.Remove(), 1u);
    char* b = c.GetInfo();
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(*b, 'b');
    EXPECT_EQ(c.Next(), b);
    EXPECT_EQ(c.Prev(), b);
    EXPECT_TRUE(c.GotoAddress(9));
    EXPECT_EQ(c.GetInfo(), b);
}

TEST(Cycle, RemoveMakesTheNextNodeCurrentAndUnlinksTheNode)
{
    Cycle<char> c = AddAll("abcd");
    ASSERT_TRUE(GoTo(c, 'b'));
    EXPECT_EQ(c.Remove(), 3u);
    EXPECT_EQ(*c.GetInfo(), 'c');
    EXPECT_EQ(Forward(c), Chars("acd"));
    EXPECT_EQ(Backward(c), Chars("adc"));
}

TEST(Cycle, RemovingTheHeadMovesTheHeadToItsNextNode)
{
    Cycle<char> c = AddAll("abc");
    ASSERT_TRUE(c.GotoAddress(9));
    EXPECT_EQ(c.Remove(), 2u);
    EXPECT_EQ(*c.GetInfo(), 'b');
    EXPECT_EQ(Forward(c), Chars("bc"));
    EXPECT_TRUE(c.GotoAddress(9));
    EXPECT_EQ(*c.GetInfo(), 'b');
}

TEST(Cycle, RemovingTheLastNodeOfTheRingWrapsCurrentToTheHead)
{
    Cycle<char> c = AddAll("abc"); // current c
    EXPECT_EQ(c.Remove(), 2u);
    EXPECT_EQ(*c.GetInfo(), 'a');
    EXPECT_EQ(Forward(c), Chars("ab"));
}

TEST(Cycle, RememberedSlotOnARemovedNodeBecomesNull)
{
    Cycle<char> c = AddAll("abcd");
    ASSERT_TRUE(GoTo(c, 'b'));
    EXPECT_TRUE(c.RememberAddress(0));
    EXPECT_TRUE(c.RememberAddress(3));
    c.Next();
    EXPECT_TRUE(c.RememberAddress(1));
    ASSERT_TRUE(c.GotoAddress(0));
    c.Remove();
    EXPECT_FALSE(c.GotoAddress(0));
    EXPECT_FALSE(c.GotoAddress(3));
    EXPECT_TRUE(c.GotoAddress(1));
    EXPECT_EQ(*c.GetInfo(), 'c');
}

TEST(Cycle, EachOfTheEightSlotsRemembersItsOwnPosition)
{
    Cycle<char> c = AddAll("01234567");
    ASSERT_TRUE(c.GotoAddress(9));
    for (unsigned long i = 0; i < 8; ++i, c.Next())
        EXPECT_TRUE(c.RememberAddress(i));
    for (int i = 7; i >= 0; --i)
    {
        EXPECT_TRUE(c.GotoAddress(i));
        EXPECT_EQ(*c.GetInfo(), static_cast<char>('0' + i));
    }
}

TEST(Cycle, UnusedSlotCannotBeVisited)
{
    Cycle<char> c = AddAll("ab");
    for (int i = 0; i < 8; ++i)
        EXPECT_FALSE(c.GotoAddress(i)) << "slot " << i;
    EXPECT_EQ(*c.GetInfo(), 'b');
}

TEST(Cycle, RememberAddressEightChangesNothingAndNineIsRefused)
{
    Cycle<char> c = AddAll("abc");
    EXPECT_TRUE(c.RememberAddress(8));
    EXPECT_EQ(*c.GetInfo(), 'c');
    EXPECT_FALSE(c.RememberAddress(9));
    EXPECT_FALSE(c.RememberAddress(10));
    EXPECT_EQ(Forward(c), Chars("abc"));
    EXPECT_TRUE(c.GotoAddress(9));
    EXPECT_EQ(*c.GetInfo(), 'a');
}

TEST(Cycle, ForgetAddressClearsASlot)
{
    Cycle<char> c = AddAll("abc");
    EXPECT_TRUE(c.RememberAddress(5));
    EXPECT_TRUE(c.ForgetAddress(5));
    EXPECT_FALSE(c.GotoAddress(5));
    EXPECT_FALSE(c.ForgetAddress(9));
    EXPECT_TRUE(c.GotoAddress(9));
}

TEST(Cycle, ForgetAddressEightClearsTheCurrentPosition)
{
    Cycle<char> c = AddAll("abc");
    EXPECT_TRUE(c.ForgetAddress(8));
    EXPECT_EQ(c.GetInfo(), nullptr);
    EXPECT_EQ(c.Next(), nullptr);
    EXPECT_EQ(c.Prev(), nullptr);
    EXPECT_FALSE(c.GotoAddress(8));
    EXPECT_TRUE(c.GotoAddress(9));
    EXPECT_EQ(*c.GetInfo(), 'a');
}

TEST(Cycle, InsertAddAndRemoveAreRefusedWithoutACurrentPosition)
{
    Cycle<char> c = AddAll("abc");
    c.ForgetAddress(8);
    EXPECT_EQ(c.Insert('x'), 3u);
    EXPECT_EQ(c.Add('y'), 3u);
    EXPECT_EQ(c.Remove(), 3u);
    EXPECT_EQ(c.GetSize(), 3u);
    EXPECT_EQ(Forward(c), Chars("abc"));
}

TEST(Cycle, InsertIntoEmptyListWorksAfterForgettingTheCurrentPosition)
{
    Cycle<char> c;
    EXPECT_TRUE(c.ForgetAddress(8));
    EXPECT_EQ(c.Insert('a'), 1u);
    EXPECT_EQ(*c.GetInfo(), 'a');
}

TEST(Cycle, GotoAddressNineMovesToTheHeadAndTenOrMoreIsRefused)
{
    Cycle<char> c = AddAll("abc");
    EXPECT_FALSE(c.GotoAddress(10));
    EXPECT_FALSE(c.GotoAddress(11));
    EXPECT_EQ(*c.GetInfo(), 'c');
    EXPECT_TRUE(c.GotoAddress(8));
    EXPECT_EQ(*c.GetInfo(), 'c');
    EXPECT_TRUE(c.GotoAddress(9));
    EXPECT_EQ(*c.GetInfo(), 'a');
}

TEST(Cycle, GotoAddressOfAPositionReturnsToThatNode)
{
    Cycle<char> c = AddAll("abcd");
    ASSERT_TRUE(GoTo(c, 'b'));
    void* b = c.GetAddress();
    c.Next();
    c.Next();
    EXPECT_TRUE(c.GotoAddress(b));
    EXPECT_EQ(*c.GetInfo(), 'b');
}

TEST(Cycle, GotoAddressRefusesNullAndNodesOfAnotherList)
{
    Cycle<char> c = AddAll("abc");
    Cycle<char> other = AddAll("xyz");
    EXPECT_FALSE(c.GotoAddress(nullptr));
    EXPECT_FALSE(c.GotoAddress(other.GetAddress()));
    EXPECT_EQ(*c.GetInfo(), 'c');
}

TEST(Cycle, GotoAddressRefusesARemovedNode)
{
    Cycle<char> c = AddAll("abc");
    ASSERT_TRUE(GoTo(c, 'b'));
    void* b = c.GetAddress();
    c.Remove();
    EXPECT_FALSE(c.GotoAddress(b));
    EXPECT_EQ(*c.GetInfo(), 'c');
}

TEST(Cycle, MoveHeadHereStartsIterationAtTheCurrentNode)
{
    Cycle<char> c = AddAll("abcd");
    ASSERT_TRUE(GoTo(c, 'c'));
    c.MoveHeadHere();
    EXPECT_EQ(Forward(c), Chars("cdab"));
    EXPECT_EQ(Backward(c), Chars("cbad"));
    EXPECT_EQ(c.GetSize(), 4u);
}

TEST(Cycle, CopyOfRingABCDHoldsADCB)
{
    Cycle<char> src = AddAll("abcd");
    Cycle<char> copy(src);
    EXPECT_EQ(copy.GetSize(), 4u);
    EXPECT_EQ(Forward(copy), Chars("adcb"));
    EXPECT_EQ(Backward(copy), Chars("abcd"));
    EXPECT_EQ(*copy.GetInfo(), 'd');
    EXPECT_EQ(Forward(src), Chars("abcd"));
}

TEST(Cycle, CopyOfEmptyListIsEmpty)
{
    Cycle<char> src;
    Cycle<char> copy(src);
    EXPECT_EQ(copy.GetSize(), 0u);
    EXPECT_EQ(copy.GetInfo(), nullptr);
}

TEST(Cycle, AssignmentEmptiesTheDestinationThenCopiesInCopyOrder)
{
    Cycle<char> src = AddAll("abcd");
    Cycle<char> dst = AddAll("xy");
    dst = src;
    EXPECT_EQ(dst.GetSize(), 4u);
    EXPECT_EQ(Forward(dst), Chars("adcb"));
    EXPECT_EQ(*dst.GetInfo(), 'd');
}

TEST(Cycle, SelfAssignmentKeepsTheList)
{
    Cycle<char> c = AddAll("abc");
    Cycle<char>& alias = c;
    c = alias;
    EXPECT_EQ(Forward(c), Chars("abc"));
    EXPECT_EQ(*c.GetInfo(), 'c');
}

TEST(Cycle, EmptyReleasesEveryNodeAndClearsTheRememberedSlots)
{
    Cycle<char> c = AddAll("abc");
    c.RememberAddress(2);
    c.Empty();
    EXPECT_EQ(c.GetSize(), 0u);
    EXPECT_EQ(c.GetInfo(), nullptr);
    EXPECT_FALSE(c.GotoAddress(9));
    EXPECT_FALSE(c.GotoAddress(2));
    EXPECT_EQ(c.Add('n'), 1u);
    EXPECT_EQ(Forward(c), Chars("n"));
}

TEST(Cycle, LongWorkListKeepsValuesInRingOrder)
{
    Cycle<long> work;
    for (long v = 1; v <= 5; ++v)
        work.Add(v * 100000L);
    EXPECT_EQ(Forward(work), (std::vector<long>{100000, 200000, 300000, 400000, 500000}));
    ASSERT_TRUE(work.GotoAddress(9));
    long sum = 0;
    while (work.GetSize() > 0)
    {
        sum += *work.GetInfo();
        work.Remove();
    }
    EXPECT_EQ(sum, 1500000L);
    EXPECT_EQ(work.GetInfo(), nullptr);
}

TEST(Cycle, StringValuesAreCopiedIntoTheNodes)
{
    Cycle<std::string> c;
    std::string text = "first";
    c.Add(text);
    text = "changed";
    c.Add(std::string("second"));
    EXPECT_EQ(Forward(c), (std::vector<std::string>{"first", "second"}));
    *c.GetInfo() = "SECOND";
    Cycle<std::string> copy(c);
    EXPECT_EQ(Forward(copy), (std::vector<std::string>{"first", "SECOND"}));
}

TEST(Cycle, ClassValuesAreDestroyedByRemoveEmptyAndTheDestructor)
{
    Counted::ResetCounts();
    {
        Cycle<Counted> c;
        for (int i = 0; i < 4; ++i)
            c.Add(Counted(i));
        EXPECT_EQ(Counted::live, 4);
        c.Remove();
        EXPECT_EQ(Counted::live, 3);
        Cycle<Counted> copy(c);
        EXPECT_EQ(Counted::live, 6);
        copy.Empty();
        EXPECT_EQ(Counted::live, 3);
    }
    EXPECT_EQ(Counted::live, 0);
    EXPECT_EQ(Counted::constructed, Counted::destroyed);
}

TEST(VoidPtrCycle, InsertThroughPointerToPointerStoresThePointee)
{
    int x = 1;
    int y = 2;
    void* px = &x;
    void* py = &y;
    VoidPtrCycle c;
    EXPECT_EQ(c.Insert(&px), 1u);
    EXPECT_EQ(c.GetInfoRef(), &x);
    EXPECT_EQ(c.Insert(&py), 2u);
    EXPECT_EQ(c.GetInfoRef(), &y);
    EXPECT_EQ(c.NextRef(), &x);
}

TEST(VoidPtrCycle, AddThroughPointerToPointerStoresThePointee)
{
    int x = 1;
    int y = 2;
    void* px = &x;
    void* py = &y;
    VoidPtrCycle c;
    EXPECT_EQ(c.Add(&px), 1u);
    EXPECT_EQ(c.Add(&py), 2u);
    EXPECT_EQ(c.GetInfoRef(), &y);
    EXPECT_EQ(Forward<void*>(c), (std::vector<void*>{&x, &y}));
}

TEST(VoidPtrCycle, RefAccessorsReturnTheStoredPointers)
{
    int v[3] = {};
    VoidPtrCycle c;
    EXPECT_EQ(c.GetInfoRef(), nullptr);
    EXPECT_EQ(c.NextRef(), nullptr);
    EXPECT_EQ(c.PrevRef(), nullptr);
    c.Add(&v[0]);
    c.Add(&v[1]);
    c.Add(&v[2]);
    EXPECT_EQ(c.GetInfoRef(), &v[2]);
    EXPECT_EQ(c.NextRef(), &v[0]);
    EXPECT_EQ(c.NextRef(), &v[1]);
    EXPECT_EQ(c.PrevRef(), &v[0]);
    EXPECT_EQ(c.PrevRef(), &v[2]);
    EXPECT_EQ(c.GetInfoRef(), &v[2]);
}

TEST(VoidPtrCycle, GetInfoIsTheAddressOfTheStoredPointer)
{
    int x = 0;
    int y = 0;
    VoidPtrCycle c;
    c.Add(&x);
    void** info = c.GetInfo();
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(*info, &x);
    *info = &y;
    EXPECT_EQ(c.GetInfoRef(), &y);
}

TEST(VoidPtrCycle, CopyHoldsTheFirstPointerThenTheRestReversed)
{
    int v[4] = {};
    VoidPtrCycle src;
    for (int& e : v)
        src.Add(&e);
    VoidPtrCycle copy(src);
    EXPECT_EQ(Forward<void*>(copy), (std::vector<void*>{&v[0], &v[3], &v[2], &v[1]}));
    EXPECT_EQ(copy.GetInfoRef(), &v[3]);
}

// ---------------------------------------------------------------------------------------------
// QorRect
// ---------------------------------------------------------------------------------------------

namespace
{
void ExpectRect(const QorRect& r, int l, int t, int rt, int b)
{
    EXPECT_EQ(r.left, l);
    EXPECT_EQ(r.top, t);
    EXPECT_EQ(r.right, rt);
    EXPECT_EQ(r.bottom, b);
}
} // namespace

TEST(QorRect, DefaultRectIsAllZero)
{
    ExpectRect(QorRect(), 0, 0, 0, 0);
}

TEST(QorRect, ConstructorSwapsReversedCorners)
{
    ExpectRect(QorRect(10, 20, 0, 5), 0, 5, 10, 20);
    ExpectRect(QorRect(10, 5, 0, 20), 0, 5, 10, 20);
    ExpectRect(QorRect(0, 20, 10, 5), 0, 5, 10, 20);
}

TEST(QorRect, ConstructorKeepsOrderedCorners)
{
    ExpectRect(QorRect(-3, -4, 7, 8), -3, -4, 7, 8);
}

TEST(QorRect, SetRectNormalisesAndResetZeroes)
{
    QorRect r;
    r.SetRect(5, 9, -5, 1);
    ExpectRect(r, -5, 1, 5, 9);
    r.Reset();
    ExpectRect(r, 0, 0, 0, 0);
}

TEST(QorRect, NormalizeRectSwapsReversedFields)
{
    QorRect r;
    r.left = 8;
    r.right = 2;
    r.top = 1;
    r.bottom = 4;
    r.NormalizeRect();
    ExpectRect(r, 2, 1, 8, 4);
    r.top = 9;
    r.NormalizeRect();
    ExpectRect(r, 2, 4, 8, 9);
}

TEST(QorRect, WidthAndHeightCountBothEdges)
{
    const QorRect r(2, 3, 11, 7);
    EXPECT_EQ(r.Width(), 10);
    EXPECT_EQ(r.Height(), 5);
    const QorRect pixel(4, 4, 4, 4);
    EXPECT_EQ(pixel.Width(), 1);
    EXPECT_EQ(pixel.Height(), 1);
}

TEST(QorRect, TopLeftAndBottomRightAreTheCorners)
{
    const QorRect r(2, 3, 11, 7);
    EXPECT_EQ(r.TopLeft(), Point<long>(2, 3));
    EXPECT_EQ(r.BottomRight(), Point<long>(11, 7));
}

TEST(QorRect, SetTopLeftMovesTheRectangleKeepingItsSize)
{
    QorRect r(2, 3, 11, 7);
    r.SetTopLeft(Point<long>(-5, 100));
    ExpectRect(r, -5, 100, 4, 104);
    EXPECT_EQ(r.Width(), 10);
    EXPECT_EQ(r.Height(), 5);
}

TEST(QorRect, SetTopLeftNormalisesFirst)
{
    QorRect r;
    r.left = 10;
    r.top = 20;
    r.right = 0;
    r.bottom = 5;
    r.SetTopLeft(Point<long>(100, 200));
    ExpectRect(r, 100, 200, 110, 215);
}

TEST(QorRect, PlusEqualsOffsetsAllFourEdges)
{
    QorRect r(0, 0, 10, 20);
    r += Point<int>(3, -4);
    ExpectRect(r, 3, -4, 13, 16);
}

TEST(QorRect, PlusEqualsWrapsInThirtyTwoBits)
{
    QorRect r(INT32_MAX - 1, INT32_MIN, INT32_MAX, INT32_MIN + 1);
    r += Point<int>(2, -2);
    ExpectRect(r, INT32_MIN, INT32_MAX - 1, INT32_MIN + 1, INT32_MAX);
}

TEST(QorRect, AssignmentCopiesTheFourFields)
{
    const QorRect a(1, 2, 3, 4);
    QorRect b(9, 9, 9, 9);
    b = a;
    ExpectRect(b, 1, 2, 3, 4);
}

TEST(QorRect, IntersectOfOverlappingRectsIsTheOverlap)
{
    const QorRect a(0, 0, 10, 10);
    const QorRect b(5, 3, 20, 8);
    QorRect r;
    EXPECT_TRUE(r.IntersectRect(a, b));
    ExpectRect(r, 5, 3, 10, 8);
}

TEST(QorRect, IntersectOfRectsSharingOneColumnIsFalseWithWidthOne)
{
    const QorRect a(0, 0, 10, 10);
    const QorRect b(10, 0, 20, 10);
    QorRect r;
    EXPECT_FALSE(r.IntersectRect(a, b));
    ExpectRect(r, 10, 0, 10, 10);
    EXPECT_EQ(r.Width(), 1);
}

TEST(QorRect, IntersectOfRectsSharingOneRowIsFalse)
{
    const QorRect a(0, 0, 10, 10);
    const QorRect b(0, 10, 10, 30);
    QorRect r;
    EXPECT_FALSE(r.IntersectRect(a, b));
    ExpectRect(r, 0, 10, 10, 10);
}

TEST(QorRect, IntersectOfDisjointRectsIsFalseAndLeftReversed)
{
    const QorRect a(0, 0, 10, 10);
    const QorRect b(20, 5, 30, 15);
    QorRect r;
    EXPECT_FALSE(r.IntersectRect(a, b));
    ExpectRect(r, 20, 5, 10, 10);
}

TEST(QorRect, IntersectWithAContainedRectIsThatRect)
{
    const QorRect outer(-10, -10, 10, 10);
    const QorRect inner(-2, -3, 4, 5);
    QorRect r;
    EXPECT_TRUE(r.IntersectRect(outer, inner));
    ExpectRect(r, -2, -3, 4, 5);
}

TEST(QorRect, IntersectThroughPointersGivesTheSameResult)
{
    const QorRect a(0, 0, 10, 10);
    const QorRect b(5, 3, 20, 8);
    QorRect r;
    EXPECT_TRUE(r.IntersectRect(&a, &b));
    ExpectRect(r, 5, 3, 10, 8);
    const QorRect c(10, 0, 20, 10);
    EXPECT_FALSE(r.IntersectRect(&a, &c));
    ExpectRect(r, 10, 0, 10, 10);
}

TEST(QorRect, UnionIsTheBoundingRect)
{
    const QorRect a(0, 0, 10, 10);
    const QorRect b(20, -5, 30, 5);
    QorRect r;
    EXPECT_TRUE(r.UnionRect(a, b));
    ExpectRect(r, 0, -5, 30, 10);
    QorRect p;
    EXPECT_TRUE(p.UnionRect(&b, &a));
    ExpectRect(p, 0, -5, 30, 10);
}

TEST(QorRect, UnionOfOneRowIsFalse)
{
    const QorRect a(0, 5, 10, 5);
    const QorRect b(2, 5, 20, 5);
    QorRect r;
    EXPECT_FALSE(r.UnionRect(a, b));
    ExpectRect(r, 0, 5, 20, 5);
}

TEST(QorRect, UnionOfOnePixelWithItselfIsFalse)
{
    const QorRect a(3, 3, 3, 3);
    QorRect r;
    EXPECT_FALSE(r.UnionRect(a, a));
    ExpectRect(r, 3, 3, 3, 3);
}

TEST(QorRect, SubtractAlwaysReturnsFalseAndLeavesZeros)
{
    const QorRect a(0, 0, 10, 10);
    const QorRect b(5, 5, 6, 6);
    QorRect r(1, 2, 3, 4);
    EXPECT_FALSE(r.SubtractRect(a, b));
    ExpectRect(r, 0, 0, 0, 0);
    QorRect p(1, 2, 3, 4);
    EXPECT_FALSE(p.SubtractRect(&a, &b));
    ExpectRect(p, 0, 0, 0, 0);
}

TEST(QorRect, PtInRectCountsAllFourEdgesAsInside)
{
    const QorRect r(0, 0, 10, 10);
    EXPECT_TRUE(r.PtInRect(10, 10));
    EXPECT_TRUE(r.PtInRect(0, 0));
    EXPECT_TRUE(r.PtInRect(0, 10));
    EXPECT_TRUE(r.PtInRect(10, 0));
    EXPECT_TRUE(r.PtInRect(5, 5));
}

TEST(QorRect, PtInRectIsFalseOneStepOutsideEachEdge)
{
    const QorRect r(0, 0, 10, 10);
    EXPECT_FALSE(r.PtInRect(-1, 5));
    EXPECT_FALSE(r.PtInRect(11, 5));
    EXPECT_FALSE(r.PtInRect(5, -1));
    EXPECT_FALSE(r.PtInRect(5, 11));
}

TEST(QorRect, IsInsideAndIsIncludeTestContainmentBothWays)
{
    const QorRect outer(0, 0, 10, 10);
    const QorRect inner(2, 2, 8, 8);
    const QorRect partial(5, 5, 15, 8);
    EXPECT_TRUE(inner.IsInside(outer));
    EXPECT_FALSE(outer.IsInside(inner));
    EXPECT_TRUE(outer.IsInclude(inner));
    EXPECT_FALSE(inner.IsInclude(outer));
    EXPECT_FALSE(partial.IsInside(outer));
    EXPECT_FALSE(outer.IsInclude(partial));
}

TEST(QorRect, EqualRectsAreInsideAndIncludeEachOther)
{
    const QorRect a(1, 2, 3, 4);
    const QorRect b(1, 2, 3, 4);
    EXPECT_TRUE(a.IsInside(b));
    EXPECT_TRUE(a.IsInclude(b));
    const QorRect wider(0, 2, 3, 4);
    EXPECT_FALSE(wider.IsInside(a));
    EXPECT_TRUE(wider.IsInclude(a));
}

TEST(QorRect, SaveWritesSixteenLittleEndianBytes)
{
    const QorRect r(-2, 1, 300, 70000);
    EXPECT_EQ(r.GetSaveBytes(), 16u);
    unsigned long written = 0;
    const Bytes bytes = SavedBytes(qortest::TempPath("rect.bin"), [&](QorFile& f) { written = r.Save(f); });
    EXPECT_EQ(written, 16u);
    const Bytes expected = {0xFE, 0xFF, 0xFF, 0xFF, 0x01, 0x00, 0x00, 0x00,
                            0x2C, 0x01, 0x00, 0x00, 0x70, 0x11, 0x01, 0x00};
    EXPECT_EQ(bytes, expected);
}

TEST(QorRect, LoadReadsTheFourFieldsAsStored)
{
    const Bytes bytes = {0x05, 0x00, 0x00, 0x00, 0xF6, 0xFF, 0xFF, 0xFF,
                         0x01, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00};
    QorRect r;
    unsigned long read = 0;
    LoadFrom(qortest::TempPath("rect.bin"), bytes, [&](QorFile& f) { read = r.Load(f); });
    EXPECT_EQ(read, 16u);
    ExpectRect(r, 5, -10, 1, 256); // not normalised by Load
}

TEST(QorRect, SaveThenLoadRestoresTheRect)
{
    const std::string path = qortest::TempPath("rect.bin");
    const QorRect r(INT32_MIN, -1, 0, INT32_MAX);
    SavedBytes(path, [&](QorFile& f) { r.Save(f); });
    QorRect back;
    QorFile f;
    ASSERT_TRUE(f.Open(path.c_str(), QorFile::kRead));
    EXPECT_EQ(back.Load(f), 16u);
    EXPECT_EQ(back, r);
}

// ---------------------------------------------------------------------------------------------
// QorGuider
// ---------------------------------------------------------------------------------------------

TEST(QorGuider, DefaultHandleIsZeroAndInvalid)
{
    const QorGuider g;
    EXPECT_EQ(g.identifier, 0u);
    EXPECT_EQ(g.object, nullptr);
    EXPECT_EQ(g.tag, 0u);
    EXPECT_FALSE(g.IsValid());
}

TEST(QorGuider, HandlesWithSameIdentifierAndPointerButDifferentTagsAreEqual)
{
    int node = 0;
    QorGuider a;
    a.identifier = 7;
    a.object = &node;
    a.tag = 1;
    QorGuider b = a;
    b.tag = 2;
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);
}

TEST(QorGuider, DifferentIdentifierOrPointerMakesHandlesUnequal)
{
    int n1 = 0;
    int n2 = 0;
    QorGuider a;
    a.identifier = 7;
    a.object = &n1;
    QorGuider b = a;
    b.identifier = 8;
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a != b);
    QorGuider c = a;
    c.object = &n2;
    EXPECT_FALSE(a == c);
    EXPECT_TRUE(a != c);
}

TEST(QorGuider, IsValidWhenThePointerIsSetAndResetClearsAll)
{
    int node = 0;
    QorGuider g;
    g.identifier = 3;
    g.tag = 9;
    EXPECT_FALSE(g.IsValid());
    g.object = &node;
    EXPECT_TRUE(g.IsValid());
    g.Reset();
    EXPECT_EQ(g.identifier, 0u);
    EXPECT_EQ(g.object, nullptr);
    EXPECT_EQ(g.tag, 0u);
    EXPECT_FALSE(g.IsValid());
}

TEST(QorGuider, AssignmentCopiesAllThreeFields)
{
    int node = 0;
    QorGuider a;
    a.identifier = 12;
    a.object = &node;
    a.tag = 34;
    QorGuider b;
    b = a;
    EXPECT_EQ(b.identifier, 12u);
    EXPECT_EQ(b.object, &node);
    EXPECT_EQ(b.tag, 34u);
}

TEST(QorGuider, SaveWritesIdentifierAndTagInSixBytes)
{
    int node = 0;
    QorGuider g;
    g.identifier = 0x12345678u;
    g.object = &node;
    g.tag = 0xBEEF;
    EXPECT_EQ(g.GetSaveBytes(), 6u);
    const Bytes bytes = SavedBytes(qortest::TempPath("guider.bin"), [&](QorFile& f) { g.Save(f); });
    EXPECT_EQ(bytes, (Bytes{0x78, 0x56, 0x34, 0x12, 0xEF, 0xBE}));
}

TEST(QorGuider, LoadReadsIdentifierAndTagAndLeavesThePointer)
{
    int node = 0;
    QorGuider attached;
    attached.object = &node;
    LoadFrom(qortest::TempPath("guider.bin"), Bytes{0x01, 0x00, 0x00, 0x80, 0x02, 0x01},
             [&](QorFile& f) { attached.Load(f); });
    EXPECT_EQ(attached.identifier, 0x80000001u);
    EXPECT_EQ(attached.tag, 0x0102u);
    EXPECT_EQ(attached.object, &node);
}

TEST(QorGuider, LoadedHandleIsNotValidUntilItsPointerIsSet)
{
    QorGuider g;
    LoadFrom(qortest::TempPath("guider.bin"), Bytes{0x05, 0x00, 0x00, 0x00, 0x00, 0x00},
             [&](QorFile& f) { g.Load(f); });
    EXPECT_EQ(g.identifier, 5u);
    EXPECT_FALSE(g.IsValid());
    int node = 0;
    g.object = &node;
    EXPECT_TRUE(g.IsValid());
}

// ---------------------------------------------------------------------------------------------
// QorDate / CountAge
// ---------------------------------------------------------------------------------------------

namespace
{
QorDate Date(short year, char month, char day, int hour = 0, int minute = 0, int second = 0, int dow = 0)
{
    QorDate d;
    d.Initialize(year, month, day, hour, minute, second, dow);
    return d;
}
} // namespace

TEST(QorDate, DefaultDateIsEmptyWithYear1911AndLocalYearZero)
{
    const QorDate d;
    EXPECT_TRUE(d.IsEmpty());
    EXPECT_EQ(d.year, 1911);
    EXPECT_EQ(d.localYear, 0);
    EXPECT_EQ(d.month, 0);
    EXPECT_EQ(d.day, 0);
    EXPECT_EQ(d.hour, 0);
    EXPECT_EQ(d.hour12, 0);
    EXPECT_EQ(d.afternoon, 0);
    EXPECT_EQ(d.minute, 0);
    EXPECT_EQ(d.second, 0);
    EXPECT_EQ(d.dayOfWeek, 0);
}

TEST(QorDate, LocalYearEightyEightIsWesternYear1999)
{
    const QorDate d = Date(88, 5, 1);
    EXPECT_EQ(d.year, 1999);
    EXPECT_EQ(d.localYear, 88);
}

TEST(QorDate, WesternYearGivesLocalYearMinus1911)
{
    const QorDate d = Date(1999, 5, 1);
    EXPECT_EQ(d.year, 1999);
    EXPECT_EQ(d.localYear, 88);
}

TEST(QorDate, YearThousandIsLocalAndYearThousandOneIsWestern)
{
    const QorDate local = Date(1000, 1, 1);
    EXPECT_EQ(local.year, 2911);
    EXPECT_EQ(local.localYear, 1000);
    const QorDate western = Date(1001, 1, 1);
    EXPECT_EQ(western.year, 1001);
    EXPECT_EQ(western.localYear, -910);
}

TEST(QorDate, InitializeStoresTheRemainingFieldsAsGiven)
{
    const QorDate d = Date(2001, 12, 31, 9, 58, 59, 6);
    EXPECT_EQ(d.month, 12);
    EXPECT_EQ(d.day, 31);
    EXPECT_EQ(d.hour, 9);
    EXPECT_EQ(d.minute, 58);
    EXPECT_EQ(d.second, 59);
    EXPECT_EQ(d.dayOfWeek, 6);
}

TEST(QorDate, HourThirteenIsOneInTheAfternoon)
{
    const QorDate d = Date(1999, 5, 1, 13);
    EXPECT_EQ(d.hour, 13);
    EXPECT_EQ(d.hour12, 1);
    EXPECT_EQ(d.afternoon, 1);
}

TEST(QorDate, HourTwelveCountsAsMorning)
{
    const QorDate d = Date(1999, 5, 1, 12);
    EXPECT_EQ(d.hour12, 12);
    EXPECT_EQ(d.afternoon, 0);
}

TEST(QorDate, HourZeroStaysZeroInTwelveHourForm)
{
    const QorDate d = Date(1999, 5, 1, 0);
    EXPECT_EQ(d.hour12, 0);
    EXPECT_EQ(d.afternoon, 0);
}

TEST(QorDate, HourTwentyThreeIsElevenInTheAfternoon)
{
    const QorDate d = Date(1999, 5, 1, 23);
    EXPECT_EQ(d.hour12, 11);
    EXPECT_EQ(d.afternoon, 1);
}

TEST(QorDate, DateIsEmptyOnlyWhenMonthAndDayAreBothZero)
{
    EXPECT_TRUE(Date(2000, 0, 0, 5).IsEmpty());
    EXPECT_FALSE(Date(2000, 0, 5).IsEmpty());
    EXPECT_FALSE(Date(2000, 5, 0).IsEmpty());
}

TEST(QorDate, EqualityIgnoresTheLocalYear)
{
    QorDate a = Date(2000, 2, 3, 14, 5, 6, 4);
    QorDate b = a;
    b.localYear = 5;
    EXPECT_TRUE(a == b);
}

TEST(QorDate, EqualityComparesEveryOtherField)
{
    const QorDate a = Date(2000, 2, 3, 14, 5, 6, 4);
    QorDate b = a;
    b.dayOfWeek = 5;
    EXPECT_FALSE(a == b);
    b = a;
    b.hour12 = 0;
    EXPECT_FALSE(a == b);
    b = a;
    b.afternoon = 0;
    EXPECT_FALSE(a == b);
    EXPECT_FALSE(a == Date(2000, 2, 3, 14, 5, 7, 4));
    EXPECT_FALSE(a == Date(2001, 2, 3, 14, 5, 6, 4));
}

TEST(QorDate, OrderingIsLexicographicFromYearToSecond)
{
    EXPECT_TRUE(Date(2001, 1, 1) > Date(2000, 12, 31, 23, 59, 59));
    EXPECT_TRUE(Date(2000, 3, 1) > Date(2000, 2, 28, 23));
    EXPECT_TRUE(Date(2000, 3, 2) > Date(2000, 3, 1, 23));
    EXPECT_TRUE(Date(2000, 3, 2, 5) > Date(2000, 3, 2, 4, 59));
    EXPECT_TRUE(Date(2000, 3, 2, 5, 1) > Date(2000, 3, 2, 5, 0, 59));
    EXPECT_TRUE(Date(2000, 3, 2, 5, 1, 1) > Date(2000, 3, 2, 5, 1, 0));
    EXPECT_TRUE(Date(2000, 3, 2, 5, 1, 0) < Date(2000, 3, 2, 5, 1, 1));
    EXPECT_FALSE(Date(2000, 3, 2, 5, 1, 0) < Date(2000, 3, 2, 5, 0, 59));
}

TEST(QorDate, DatesDifferingOnlyInDayOfWeekAreNeitherGreaterNorLess)
{
    const QorDate a = Date(2000, 3, 2, 5, 1, 0, 1);
    const QorDate b = Date(2000, 3, 2, 5, 1, 0, 6);
    EXPECT_FALSE(a > b);
    EXPECT_FALSE(a < b);
    EXPECT_FALSE(b > a);
}

TEST(QorDate, OrderingComparesSignedFields)
{
    QorDate a = Date(2000, 3, 2);
    QorDate b = a;
    a.month = -1;
    EXPECT_TRUE(a < b);
    EXPECT_TRUE(b > a);
}

TEST(QorDate, PlusEqualsLeavesTheDateUnchanged)
{
    QorDate a = Date(2000, 3, 2, 5, 1, 0, 1);
    const QorDate before = a;
    QorDate& result = (a += Date(1, 1, 1, 1, 1, 1, 1));
    EXPECT_EQ(&result, &a);
    EXPECT_TRUE(a == before);
    EXPECT_EQ(a.localYear, before.localYear);
}

TEST(QorDate, SaveWritesThirtyBytesInFieldOrderAndReturnsZero)
{
    const QorDate d = Date(2024, 2, 29, 15, 30, 45, 5);
    unsigned long result = 1;
    const Bytes bytes = SavedBytes(qortest::TempPath("date.bin"), [&](QorFile& f) { result = d.Save(f); });
    EXPECT_EQ(result, 0u);
    const Bytes expected = {
        0xE8, 0x07,             // year 2024
        0x71, 0x00,             // local year 113
        0x02,                   // month
        0x1D,                   // day 29
        0x0F, 0x00, 0x00, 0x00, // hour 15
        0x03, 0x00, 0x00, 0x00, // hour12
        0x01, 0x00, 0x00, 0x00, // afternoon
        0x1E, 0x00, 0x00, 0x00, // minute 30
        0x2D, 0x00, 0x00, 0x00, // second 45
        0x05, 0x00, 0x00, 0x00, // day of week
    };
    EXPECT_EQ(bytes, expected);
}

TEST(QorDate, SaveOfDefaultDateWritesThirtyBytes)
{
    const QorDate d;
    unsigned long result = 1;
    const Bytes bytes = SavedBytes(qortest::TempPath("date.bin"), [&](QorFile& f) { result = d.Save(f); });
    EXPECT_EQ(result, 0u);
    Bytes expected(30, 0);
    expected[0] = 0x77; // 1911
    expected[1] = 0x07;
    EXPECT_EQ(bytes, expected);
}

TEST(QorDate, LoadRestoresEveryFieldAndReturnsZero)
{
    const std::string path = qortest::TempPath("date.bin");
    const QorDate d = Date(1995, 11, 7, 20, 15, 3, 3);
    SavedBytes(path, [&](QorFile& f) { d.Save(f); });
    QorDate back;
    QorFile f;
    ASSERT_TRUE(f.Open(path.c_str(), QorFile::kRead));
    EXPECT_EQ(back.Load(f), 0u);
    EXPECT_EQ(f.GetPosition(), 30u);
    EXPECT_TRUE(back == d);
    EXPECT_EQ(back.localYear, 84);
    EXPECT_EQ(back.hour12, 8);
    EXPECT_EQ(back.afternoon, 1);
}

TEST(QorDate, LoadTakesTheStoredFieldsWithoutRecomputing)
{
    const Bytes bytes = {
        0xD0, 0x07, 0x05, 0x00, 0x01, 0x02, 0x0E, 0x00, 0x00, 0x00, 0x07, 0x00, 0x00, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x03, 0x00, 0x00, 0x00, 0x04, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF,
    };
    QorDate d;
    LoadFrom(qortest::TempPath("date.bin"), bytes, [&](QorFile& f) { d.Load(f); });
    EXPECT_EQ(d.year, 2000);
    EXPECT_EQ(d.localYear, 5);
    EXPECT_EQ(d.month, 1);
    EXPECT_EQ(d.day, 2);
    EXPECT_EQ(d.hour, 14);
    EXPECT_EQ(d.hour12, 7);
    EXPECT_EQ(d.afternoon, 0);
    EXPECT_EQ(d.minute, 3);
    EXPECT_EQ(d.second, 4);
    EXPECT_EQ(d.dayOfWeek, -1);
}

TEST(QorDate, GetCurrentMatchesTheLocalClockWithSundayAsOne)
{
    QorDate d;
    std::tm local{};
    bool stable = false;
    for (int attempt = 0; attempt < 5 && !stable; ++attempt)
    {
        const std::time_t before = std::time(nullptr);
        d.GetCurrent();
        const std::time_t after = std::time(nullptr);
        stable = before == after;
        localtime_r(&before, &local);
    }
    ASSERT_TRUE(stable);
    EXPECT_EQ(d.year, local.tm_year + 1900);
    EXPECT_EQ(d.localYear, local.tm_year - 11);
    EXPECT_EQ(d.month, local.tm_mon + 1);
    EXPECT_EQ(d.day, local.tm_mday);
    EXPECT_EQ(d.hour, local.tm_hour);
    EXPECT_EQ(d.hour12, local.tm_hour < 13 ? local.tm_hour : local.tm_hour - 12);
    EXPECT_EQ(d.afternoon, local.tm_hour > 12 ? 1 : 0);
    EXPECT_EQ(d.minute, local.tm_min);
    EXPECT_EQ(d.second, local.tm_sec);
    EXPECT_EQ(d.dayOfWeek, local.tm_wday + 1);
    EXPECT_GE(d.dayOfWeek, 1);
    EXPECT_LE(d.dayOfWeek, 7);
    EXPECT_FALSE(d.IsEmpty());
}

TEST(QorDateCountAge, EqualDatesGiveZero)
{
    QorDate a = Date(2000, 5, 1, 10, 0, 0, 1);
    QorDate b = Date(2000, 5, 1, 10, 0, 0, 3);
    EXPECT_EQ(CountAge(a, b), 0);
    EXPECT_EQ(CountAge(a, a), 0);
}

TEST(QorDateCountAge, FromFifteenMarchTo1MayTenYearsLaterGivesNine)
{
    QorDate birth = Date(1990, 3, 15);
    QorDate now = Date(2000, 5, 1);
    EXPECT_EQ(CountAge(birth, now), 9);
}

TEST(QorDateCountAge, ArgumentOrderDoesNotChangeTheResult)
{
    QorDate birth = Date(1990, 3, 15);
    QorDate now = Date(2000, 5, 1);
    EXPECT_EQ(CountAge(now, birth), 9);
    QorDate later = Date(2010, 8, 20);
    EXPECT_EQ(CountAge(birth, later), 20);
    EXPECT_EQ(CountAge(later, birth), 20);
}

TEST(QorDateCountAge, LaterMonthAndDayAtLeastTheEarlierGiveTheFullYearDifference)
{
    QorDate birth = Date(1990, 3, 15);
    QorDate sameDay = Date(2000, 3, 15);
    QorDate laterBoth = Date(2000, 4, 20);
    EXPECT_EQ(CountAge(birth, sameDay), 10);
    EXPECT_EQ(CountAge(birth, laterBoth), 10);
}

TEST(QorDateCountAge, EarlierMonthInTheLaterYearGivesOneLess)
{
    QorDate birth = Date(1990, 5, 15);
    QorDate now = Date(2000, 3, 20);
    EXPECT_EQ(CountAge(birth, now), 9);
}

TEST(QorDateCountAge, SameYearWithSmallerDayOfMonthGivesMinusOne)
{
    QorDate a = Date(2000, 3, 15);
    QorDate b = Date(2000, 5, 1);
    EXPECT_EQ(CountAge(a, b), -1);
    QorDate c = Date(2000, 5, 20);
    EXPECT_EQ(CountAge(a, c), 0);
}

TEST(QorDateCountAge, LocalYearsAreCountedAsTheirWesternYears)
{
    QorDate a = Date(79, 6, 1);   // 1990
    QorDate b = Date(2000, 6, 1); // local 89
    EXPECT_EQ(CountAge(a, b), 10);
}
