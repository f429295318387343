#pragma once
// How the headers over ICU's flat functions declare them: one table line each,
//
//     QVX_ICU(std::int32_t, u_countChar32, (char16_t const*, s), (std::int32_t, length));
//
// is the result, ICU's name and the parameters, and declares
//
//     std::int32_t t_u_countChar32(char16_t const* s, std::int32_t length) noexcept;
//
// The library's source reads the same line with a macro that defines the function, so adding one is adding one line.

#include <qvxsys/Platform.h>

#define QVX_ICU_PARAMETER(TYPE, NAME) TYPE NAME
#define QVX_ICU_ARGUMENT(TYPE, NAME) NAME

// QVX_ICU_EACH(M, (a, b), (c, d)) is M(a, b), M(c, d); up to fourteen pairs.
#define QVX_ICU_1(M, P) M P
#define QVX_ICU_2(M, P, ...) M P, QVX_ICU_1(M, __VA_ARGS__)
#define QVX_ICU_3(M, P, ...) M P, QVX_ICU_2(M, __VA_ARGS__)
#define QVX_ICU_4(M, P, ...) M P, QVX_ICU_3(M, __VA_ARGS__)
#define QVX_ICU_5(M, P, ...) M P, QVX_ICU_4(M, __VA_ARGS__)
#define QVX_ICU_6(M, P, ...) M P, QVX_ICU_5(M, __VA_ARGS__)
#define QVX_ICU_7(M, P, ...) M P, QVX_ICU_6(M, __VA_ARGS__)
#define QVX_ICU_8(M, P, ...) M P, QVX_ICU_7(M, __VA_ARGS__)
#define QVX_ICU_9(M, P, ...) M P, QVX_ICU_8(M, __VA_ARGS__)
#define QVX_ICU_10(M, P, ...) M P, QVX_ICU_9(M, __VA_ARGS__)
#define QVX_ICU_11(M, P, ...) M P, QVX_ICU_10(M, __VA_ARGS__)
#define QVX_ICU_12(M, P, ...) M P, QVX_ICU_11(M, __VA_ARGS__)
#define QVX_ICU_13(M, P, ...) M P, QVX_ICU_12(M, __VA_ARGS__)
#define QVX_ICU_14(M, P, ...) M P, QVX_ICU_13(M, __VA_ARGS__)
#define QVX_ICU_PICK(_1, _2, _3, _4, _5, _6, _7, _8, _9, _10, _11, _12, _13, _14, CHOSEN, ...) CHOSEN
#define QVX_ICU_EACH(M, ...)                                                                                           \
    QVX_ICU_PICK(__VA_ARGS__, QVX_ICU_14, QVX_ICU_13, QVX_ICU_12, QVX_ICU_11, QVX_ICU_10, QVX_ICU_9, QVX_ICU_8,        \
                 QVX_ICU_7, QVX_ICU_6, QVX_ICU_5, QVX_ICU_4, QVX_ICU_3, QVX_ICU_2, QVX_ICU_1, none)                    \
    (M, __VA_ARGS__)

#define QVX_ICU(RESULT, NAME, ...) QVXSYS_API RESULT t_##NAME(QVX_ICU_EACH(QVX_ICU_PARAMETER, __VA_ARGS__)) noexcept
#define QVX_ICU_0(RESULT, NAME) QVXSYS_API RESULT t_##NAME() noexcept
