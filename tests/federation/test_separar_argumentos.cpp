// The argument split of the IFC text index when it stops after a number of
// pieces, and on long argument lists whose strings and parentheses fall
// anywhere in the text.
#include "federation/TextoSTEP.h"

#include <gtest/gtest.h>
#include <random>

using namespace teskal;

namespace {

using Textos = std::vector<std::string>;

Textos separar(std::string_view args, std::size_t maximo) {
    std::vector<std::string_view> piezas;
    separarArgumentosSTEP(args, piezas, maximo);
    return Textos(piezas.begin(), piezas.end());
}

} // namespace

TEST(SepararArgumentosSTEP, AMaximumGivesTheFirstPiecesAndTheSameCount) {
    // "$" is a piece, a trailing empty one is not: three arguments are
    // counted the same with or without the maximum.
    EXPECT_EQ(separar("'a',$,", 3), (Textos{"'a'", "$"}));
    EXPECT_EQ(separar("'a',$,$", 3), (Textos{"'a'", "$", "$"}));
    EXPECT_EQ(separar("'a',$, ,$", 3), (Textos{"'a'", "$", ""}));
    EXPECT_EQ(separar("a,b,c,d,e", 2), (Textos{"a", "b"}));
    EXPECT_EQ(separar("(a,b),'c,d',e", 2), (Textos{"(a,b)", "'c,d'"}));
    EXPECT_EQ(separar(" , ,x", 2), (Textos{"", ""}));
    EXPECT_EQ(separar("'sin cierre,a,b", 5), (Textos{"'sin cierre,a,b"}));
    EXPECT_EQ(separar("a,(b,c", 5), (Textos{"a", "(b,c"}));
    EXPECT_TRUE(separar("a,b", 0).empty());
    // The buffer is emptied first.
    std::vector<std::string_view> piezas = {"x", "y", "z"};
    separarArgumentosSTEP("a", piezas, 1);
    EXPECT_EQ(piezas, (std::vector<std::string_view>{"a"}));
}

TEST(SepararArgumentosSTEP, LongListsSplitWhereverTheirStringsAndParenthesesFall) {
    // Pieces whose commas are protected by quotes or parentheses, joined
    // with blanks around the commas; a run of filler shifts everything by
    // each amount from 0 to 40 bytes.
    const Textos piezas = {"'Muro, exterior (norte)'",
                           "#12",
                           "$",
                           "((1.,2.,3.),(4.,5.,6.))",
                           "IFCLABEL('a,b)c')",
                           "'O''Brien, Ana'",
                           "''",
                           "(#40,#41,#42,#43,#44,#45,#46,#47)",
                           "*",
                           "'\\X2\\00E9\\X0\\,'",
                           ".T.",
                           "'a(,b'"};
    std::mt19937 azar(7);
    for (std::size_t relleno = 0; relleno <= 40; ++relleno) {
        Textos esperadas = piezas;
        esperadas[0] = "'" + std::string(relleno, 'x') + esperadas[0].substr(1);
        std::string args;
        for (std::size_t i = 0; i < esperadas.size(); ++i) {
            if (i > 0) args += std::string(azar() % 3, ' ') + "," + std::string(azar() % 3, '\t');
            args += esperadas[i];
        }
        ASSERT_EQ(separar(args, SIZE_MAX), esperadas) << args;
        for (std::size_t maximo = 1; maximo <= esperadas.size(); ++maximo)
            ASSERT_EQ(separar(args, maximo), Textos(esperadas.begin(), esperadas.begin() + maximo))
                << args << " with at most " << maximo;
    }
}
