#pragma once

#include "core/QorExport.h"

#include "qor/core.h"

// Text utilities for Traditional-Chinese text in code page 950 (Big5). They work on bytes: a byte of
// 0xA0 or more is taken as the first of a double-byte character and kept together with the byte after it.
// The converters write into out (its old content is replaced); an empty or null src makes out empty.
// src and out may be the same string. A failed allocation leaves out empty with error code 1.

/// True when the byte, taken unsigned, is 0xA0 or more: the first byte of a Big5 character.
QOR_API char IsUnicode(char c);

/// Full-width text for horizontal writing: digits and letters become full-width (lower-case letters fold
/// to the full-width capitals), "." becomes "﹒" and "-" becomes "—"; other bytes and Big5 pairs are kept.
/// \note A lead byte that ends src (a truncated pair) is copied alone.
QOR_API void HalfToFull_H(QorString& out, const char* src);
/// As HalfToFull_H for vertical writing: "-" becomes "－".
QOR_API void HalfToFull_V(QorString& out, const char* src);

/// Each ASCII digit becomes its lower-case numeral ("○一二...九"), no place units: 2024 gives 二○二四.
QOR_API void IntegerToChineseL(QorString& out, const char* src);
/// Each ASCII digit becomes its financial numeral ("零壹貳...玖"), no place units.
QOR_API void IntegerToChineseU(QorString& out, const char* src);

/// Each run of ASCII digits is written as a whole number in words with the lower-case numerals, the units
/// 十百千 within a group of four digits and 萬億兆 between groups; other bytes and Big5 pairs are kept.
/// Wording rules:
/// - Leading zeros are ignored; a run of zeros only is the value 0, written ○.
/// - Zeros at the end of a group are not read (1000000 → 一百萬, 10001000 → 一千萬一千); any other run of
///   zeros, including one spanning an empty group, is read as one 零 (105 → 一百零五, 1005 → 一千零五,
///   10010 → 一萬零一十, 100000001 → 一億零一).
/// - The leading 一 is dropped when the leading group of four digits is 10 to 19 (15 → 十五,
///   100000 → 十萬, 100015 → 十萬零一十五, 150000 → 十五萬); elsewhere 一十 is kept (一百一十).
/// - A run of more than 16 digits after its leading zeros (beyond the 兆 group) is written digit by digit,
///   as IntegerToChineseL does.
QOR_API void IntegerToChineseLF(QorString& out, const char* src);
/// As IntegerToChineseLF with the financial numerals and units 拾佰仟; the leading 壹 is always kept
/// (15 → 壹拾伍, 100000 → 壹拾萬) and the value 0 is 零.
QOR_API void IntegerToChineseUF(QorString& out, const char* src);

/// Meant as the reverse of IntegerToChineseL, but it tests lead bytes the other way round (a byte of 0xA0
/// or more is copied alone, a lower byte starts a pair that is compared with the numerals), so no numeral
/// is ever matched: out is a copy of src.
QOR_API void ChineseLToInteger(QorString& out, const char* src);
/// As ChineseLToInteger with the financial numerals: out is a copy of src.
QOR_API void ChineseUToInteger(QorString& out, const char* src);

/// Breaks text into lines of at most width bytes (line feeds also end a line and are not stored) without
/// splitting a Big5 pair or a number (digits, optionally begun by "-" or "." and holding one "."): a number
/// that would continue past the line's end moves whole to the next line. flag has no effect.
/// Returns false for a negative width, for width 0, and when a line can take nothing (a Big5 pair under
/// width 1); lines then holds what was built. Empty text with a width above 0 gives no lines and true.
/// \note The bytes of a carried number do not count towards the new line's width, so a line may be longer
///       than width; a number longer than width leaves the line it started on empty.
/// \note A lead byte that is the text's last byte is kept alone when it fits and dropped when the line is full.
QOR_API char CutString(QorString& text, Array<QorString>& lines, long width, char flag);

/// Converts n bytes of Big5 text (code page 950) to UTF-8 through the C library's iconv.
/// Each byte or pair that does not convert becomes U+FFFD and the conversion goes on after it (an unmapped
/// pair counts once, as does a lead byte cut off by the end); *failed, when given, receives the count of
/// such sequences. Zero bytes are converted like any other.
/// \note Allocation failure, or an input of more than 2^31 - 1 bytes, gives an empty string with error code 1.
QOR_API QorString QorBig5ToUtf8(const char* big5, unsigned long n, unsigned long* failed = nullptr);
/// Converts n bytes of UTF-8 to Big5 (code page 950). Each character without a Big5 form and each malformed
/// sequence (its longest valid beginning, at least one byte) becomes "?" and the conversion goes on after
/// it; *failed, when given, receives the count of such sequences.
/// \note Allocation failure, or an input of more than 2^31 - 1 bytes, gives an empty string with error code 1.
QOR_API QorString QorUtf8ToBig5(const char* utf8, unsigned long n, unsigned long* failed = nullptr);
