// The STEP text helpers shared by the three readers of the IFC text index,
// and the blank-and-tab trim they all rely on.
#include "federation/TextoSTEP.h"
#include "federation/TextoUTF8.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace teskal;

namespace {

std::vector<std::string> separar(std::string_view args) {
    std::vector<std::string> r;
    for (const auto a : separarArgumentosSTEP(args)) r.emplace_back(a);
    return r;
}

using Textos = std::vector<std::string>;
using Referencias = std::vector<std::int64_t>;

} // namespace

TEST(RecorteBlancos, RemovesTabsAndEveryUnicodeSpaceSeparator) {
    const char* separadores[] = {" ",
                                 "\t",
                                 "\xC2\xA0",
                                 "\xE1\x9A\x80",
                                 "\xE2\x80\x80",
                                 "\xE2\x80\x85",
                                 "\xE2\x80\x8A",
                                 "\xE2\x80\xAF",
                                 "\xE2\x81\x9F",
                                 "\xE3\x80\x80"};
    for (const char* s : separadores) {
        const std::string texto = std::string(s) + s + "Muro" + s + "\t" + s;
        EXPECT_EQ(recortar(texto), "Muro") << "separator bytes of length " << std::strlen(s);
    }
    EXPECT_EQ(recortar(" \t \xC2\xA0 "), "");
    // Inner blanks stay.
    EXPECT_EQ(recortar("\xE3\x80\x80Muro\xC2\xA0"
                       "200\xE3\x80\x80"),
              "Muro\xC2\xA0"
              "200");
}

TEST(RecorteBlancos, KeepsLineEndsAndCharactersThatAreNotSpaceSeparators) {
    EXPECT_EQ(recortar("#12=IFCWALL();\r"), "#12=IFCWALL();\r");
    EXPECT_EQ(recortar("\nMuro\n"), "\nMuro\n");
    EXPECT_EQ(recortar("\xE2\x80\x8BMuro"), "\xE2\x80\x8BMuro"); // zero width space
    EXPECT_EQ(recortar("Muro\xE2\x80\xA8"), "Muro\xE2\x80\xA8"); // line separator
    EXPECT_EQ(recortar("\xC2\x85Muro"), "\xC2\x85Muro");         // next line
    EXPECT_EQ(recortar("\v\fMuro"), "\v\fMuro");
    // A character whose last bytes resemble no separator is kept whole.
    EXPECT_EQ(recortar("Muro \xC3\x91"), "Muro \xC3\x91");
}

TEST(SepararArgumentosSTEP, SplitsAWallsAttributes) {
    EXPECT_EQ(separar("'2O2Fr$t4X7Zf8NOew3FLOH',#5,'Muro',$,$,#20,#30,$"),
              (Textos{"'2O2Fr$t4X7Zf8NOew3FLOH'", "#5", "'Muro'", "$", "$", "#20", "#30", "$"}));
}

TEST(SepararArgumentosSTEP, CommasInsideQuotesOrParenthesesDoNotSplit) {
    EXPECT_EQ(separar("'Muro, exterior',(#40,#41,#42),IFCLABEL('a,b'),*"),
              (Textos{"'Muro, exterior'", "(#40,#41,#42)", "IFCLABEL('a,b')", "*"}));
    // A parenthesis inside a string does not change the depth.
    EXPECT_EQ(separar("'a(',#2,'b)',#3"), (Textos{"'a('", "#2", "'b)'", "#3"}));
    EXPECT_EQ(separar("((1.,2.),(3.,4.)),$"), (Textos{"((1.,2.),(3.,4.))", "$"}));
    // Doubled apostrophes toggle twice and protect what follows them.
    EXPECT_EQ(separar("'O''Brien, Ana',#7"), (Textos{"'O''Brien, Ana'", "#7"}));
}

TEST(SepararArgumentosSTEP, TrimsPiecesKeepsInnerEmptiesDropsATrailingEmpty) {
    EXPECT_EQ(separar(" 'a' ,\t#2\t, , $ ,"), (Textos{"'a'", "#2", "", "$"}));
    EXPECT_EQ(separar(",,"), (Textos{"", ""}));
    EXPECT_EQ(separar("\xC2\xA0'a'\xE3\x80\x80,\xE2\x80\x89#2"), (Textos{"'a'", "#2"}));
    EXPECT_TRUE(separarArgumentosSTEP("").empty());
    EXPECT_TRUE(separarArgumentosSTEP(" \t ").empty());
    // Blanks inside a quoted string stay.
    EXPECT_EQ(separar("' Muro '"), (Textos{"' Muro '"}));
}

TEST(LimpiarTextoSTEP, UnquotesTrimsAndEmptiesNullValues) {
    EXPECT_EQ(limpiarTextoSTEP("'Muro'"), "Muro");
    EXPECT_EQ(limpiarTextoSTEP(" \t'Muro exterior'\xE2\x80\xAF"), "Muro exterior");
    EXPECT_EQ(limpiarTextoSTEP("$"), "");
    EXPECT_EQ(limpiarTextoSTEP(" * "), "");
    EXPECT_EQ(limpiarTextoSTEP("''"), "");
    EXPECT_EQ(limpiarTextoSTEP("'"), "");
    // A quoted dollar is text, not a null value.
    EXPECT_EQ(limpiarTextoSTEP("'$'"), "$");
    EXPECT_EQ(limpiarTextoSTEP("#12"), "#12");
    EXPECT_EQ(limpiarTextoSTEP("'Muro"), "'Muro");
    // Blanks inside the quotes are part of the text.
    EXPECT_EQ(limpiarTextoSTEP("' Muro '"), " Muro ");
    // A carriage return is not trimmed, so the quotes are not at the end.
    EXPECT_EQ(limpiarTextoSTEP("'Muro'\r"), "'Muro'\r");
}

TEST(LimpiarTextoSTEP, KeepsDoubledApostrophesAndDecodesEscapes) {
    EXPECT_EQ(limpiarTextoSTEP("'O''Brien'"), "O''Brien");
    EXPECT_EQ(limpiarTextoSTEP("'Muro \\X2\\00D1\\X0\\'"), "Muro \xC3\x91");
    EXPECT_EQ(limpiarTextoSTEP("'a\\X\\F1b'"), "a\xC3\xB1"
                                               "b");
}

TEST(DecodificarTextoSTEP, DecodesX2GroupsOfFourHexDigits) {
    EXPECT_EQ(decodificarTextoSTEP("Muro \\X2\\00D1\\X0\\"), "Muro \xC3\x91");
    EXPECT_EQ(decodificarTextoSTEP("\\X2\\00C100E920AC\\X0\\z"), "\xC3\x81\xC3\xA9\xE2\x82\xAC"
                                                                 "z");
    EXPECT_EQ(decodificarTextoSTEP("\\X2\\00f1\\X0\\"), "\xC3\xB1");
    // A short last group is read as it stands.
    EXPECT_EQ(decodificarTextoSTEP("\\X2\\004142\\X0\\"), "AB");
    // Reading resumes after the closing escape, which may be followed by more.
    EXPECT_EQ(decodificarTextoSTEP("a\\X2\\0041\\X0\\b\\X2\\0042\\X0\\c"), "aAbBc");
    EXPECT_EQ(decodificarTextoSTEP("\\X2\\\\X0\\x"), "x");
}

TEST(DecodificarTextoSTEP, DropsBadGroupsAndSurrogatesWithoutAMark) {
    EXPECT_EQ(decodificarTextoSTEP("\\X2\\00ZZ0041\\X0\\"), "A");
    // A surrogate pair is lost rather than combined.
    EXPECT_EQ(decodificarTextoSTEP("a\\X2\\D83DDE00\\X0\\b"), "ab");
    EXPECT_EQ(decodificarTextoSTEP("\\X2\\DFFF0043E000\\X0\\"), "C\xEE\x80\x80");
}

TEST(DecodificarTextoSTEP, DecodesXAsOneLatin1CodePoint) {
    EXPECT_EQ(decodificarTextoSTEP("a\\X\\F1b"), "a\xC3\xB1"
                                                 "b");
    EXPECT_EQ(decodificarTextoSTEP("\\X\\e9t\\X\\E9"), "\xC3\xA9t\xC3\xA9");
    // Only two characters belong to the escape.
    EXPECT_EQ(decodificarTextoSTEP("\\X\\4142"), "A42");
    // No further mapping: 0x80 to 0x9F stay C1 code points.
    EXPECT_EQ(decodificarTextoSTEP("\\X\\80"), "\xC2\x80");
}

TEST(DecodificarTextoSTEP, CopiesEveryOtherBackslashAsItStands) {
    EXPECT_EQ(decodificarTextoSTEP("a\\S\\b"), "a\\S\\b");
    EXPECT_EQ(decodificarTextoSTEP("C:\\\\Planos"), "C:\\\\Planos");
    EXPECT_EQ(decodificarTextoSTEP("\\PA\\Muro"), "\\PA\\Muro");
    // Without the closing escape, \X2\ is plain text, but what follows it is
    // still read.
    EXPECT_EQ(decodificarTextoSTEP("a\\X2\\00D1b"), "a\\X2\\00D1b");
    EXPECT_EQ(decodificarTextoSTEP("\\X2\\00D1 \\X\\F1"), "\\X2\\00D1 \xC3\xB1");
    EXPECT_EQ(decodificarTextoSTEP("fin\\"), "fin\\");
    // Text without a backslash stands, whatever it holds.
    EXPECT_EQ(decodificarTextoSTEP("\xC3\x91"
                                   "and\xC3\xBA X2 '' $"),
              "\xC3\x91"
              "and\xC3\xBA X2 '' $");
}

TEST(LeerValorNominal, EnumerationsLoseTheirDots) {
    EXPECT_EQ(leerValorNominal(".T."), "T");
    EXPECT_EQ(leerValorNominal(" .ELEMENT. "), "ELEMENT");
    EXPECT_EQ(leerValorNominal(".."), "");
    EXPECT_EQ(leerValorNominal("$"), "");
    EXPECT_EQ(leerValorNominal(" $\t"), "");
}

TEST(LeerValorNominal, TypedValuesGiveWhatIsInsideAsWritten) {
    EXPECT_EQ(leerValorNominal("IFCLABEL('x')"), "x");
    EXPECT_EQ(leerValorNominal("IFCLENGTHMEASURE(2.5)"), "2.5");
    EXPECT_EQ(leerValorNominal("IFCLENGTHMEASURE(0.200)"), "0.200");
    EXPECT_EQ(leerValorNominal("IFCTHERMALTRANSMITTANCEMEASURE(1.50E-1)"), "1.50E-1");
    EXPECT_EQ(leerValorNominal("IFCINTEGER(007)"), "007");
    // Between the first "(" and the last ")".
    EXPECT_EQ(leerValorNominal("IFCLABEL('Muro (200)')"), "Muro (200)");
    // Inside the parentheses the dots of an enumeration stay.
    EXPECT_EQ(leerValorNominal("IFCBOOLEAN(.T.)"), ".T.");
    EXPECT_EQ(leerValorNominal("IFCLABEL($)"), "");
    EXPECT_EQ(leerValorNominal("IFCTEXT('O''Brien')"), "O''Brien");
    EXPECT_EQ(leerValorNominal("IFCLABEL('Muro \\X2\\00D1\\X0\\')"), "Muro \xC3\x91");
}

TEST(LeerValorNominal, UntypedValuesAreCleanedText) {
    EXPECT_EQ(leerValorNominal("'Hormig\\X\\F3n'"), "Hormig\xC3\xB3n");
    EXPECT_EQ(leerValorNominal("12.50"), "12.50");
    EXPECT_EQ(leerValorNominal("1500."), "1500.");
    EXPECT_EQ(leerValorNominal(".5"), ".5");
    EXPECT_EQ(leerValorNominal("*"), "");
    EXPECT_EQ(leerValorNominal("'a(b'"), "a(b");
}

TEST(LeerListaReferencias, ReadsTheNumbersOfAList) {
    EXPECT_EQ(leerListaReferencias("(#40,#41,#42)"), (Referencias{40, 41, 42}));
    EXPECT_EQ(leerListaReferencias(" ( #1 ,\t#22 ) "), (Referencias{1, 22}));
    EXPECT_EQ(leerListaReferencias("#5,#6"), (Referencias{5, 6}));
    EXPECT_EQ(leerListaReferencias("(#-3,#+4,#9)"), (Referencias{-3, 4, 9}));
    EXPECT_EQ(leerListaReferencias("(#12)"), (Referencias{12}));
}

TEST(LeerListaReferencias, SkipsPiecesThatAreNotReferences) {
    EXPECT_EQ(leerListaReferencias("(#1,$,'#2',#abc,# 3,#4x,,#99999999999999999999,#5)"),
              (Referencias{1, 5}));
    EXPECT_TRUE(leerListaReferencias("()").empty());
    EXPECT_TRUE(leerListaReferencias("(").empty());
    EXPECT_TRUE(leerListaReferencias("$").empty());
    EXPECT_TRUE(leerListaReferencias("").empty());
}

TEST(LeerListaReferencias, DropsTheLastCharacterAfterAnOpeningParenthesisUnchecked) {
    EXPECT_EQ(leerListaReferencias("(#1,#23"), (Referencias{1, 2}));
    EXPECT_EQ(leerListaReferencias("(#1,#2"), (Referencias{1}));
    EXPECT_EQ(leerListaReferencias("(#1,#2));ENDSEC;"), (Referencias{1}));
}

TEST(LeerReferencia, ReadsOneReference) {
    EXPECT_EQ(leerReferencia("#12"), 12);
    EXPECT_EQ(leerReferencia(" \t#12\xC2\xA0"), 12);
    EXPECT_EQ(leerReferencia("#-4"), -4);
    EXPECT_EQ(leerReferencia("#+4"), 4);
    EXPECT_EQ(leerReferencia("#9223372036854775807"), INT64_MAX);
    EXPECT_FALSE(leerReferencia("$"));
    EXPECT_FALSE(leerReferencia("12"));
    EXPECT_FALSE(leerReferencia("#"));
    EXPECT_FALSE(leerReferencia("#12a"));
    EXPECT_FALSE(leerReferencia("# 12"));
    EXPECT_FALSE(leerReferencia("#1.5"));
    EXPECT_FALSE(leerReferencia("#+-4"));
    EXPECT_FALSE(leerReferencia("#9223372036854775808"));
    EXPECT_FALSE(leerReferencia("(#12)"));
}
