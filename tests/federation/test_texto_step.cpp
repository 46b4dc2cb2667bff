// The STEP text helpers shared by the three readers of the IFC text index,
// and the blank-and-tab trim they all rely on.
#include "federation/TablaEntidadesIFC.h"
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
    const char* separadores[] = {" ",            "\t",           "\xC2\xA0",     "\xE1\x9A\x80", "\xE2\x80\x80",
                                 "\xE2\x80\x85", "\xE2\x80\x8A", "\xE2\x80\xAF", "\xE2\x81\x9F", "\xE3\x80\x80"};
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

// A quoted text loses its quotes and undoubles its apostrophes, blanks inside
// it stay; "$", "*" and an empty or broken string are empty; the rest stands.
TEST(LimpiarTextoSTEP, UnquotesTrimsAndEmptiesNullValues) {
    const std::pair<const char*, const char*> casos[] = {
        {"'Muro'", "Muro"}, {" \t'Muro exterior'\xE2\x80\xAF", "Muro exterior"}, {"$", ""}, {" * ", ""},
        {"''", ""},         {"'", ""},        {"'$'", "$"},   {"#12", "#12"},        {"'Muro", "'Muro"},
        {"' Muro '", " Muro "}, {"'O''Brien'", "O'Brien"}, {"'D'''", "D'"}};
    for (const auto& [escrito, limpio] : casos) EXPECT_EQ(limpiarTextoSTEP(escrito), limpio) << escrito;
}

TEST(DecodificarTextoSTEP, DecodesEveryEscapeAndUndoublesApostrophes) {
    struct Caso {
        const char* escrito;
        const char* esperado;
    };
    const Caso casos[] = {
        // \X2\: four hex digits a character, either case; a short last group
        // stands; surrogate pairs combine; what follows \X0\ is read on.
        {"Muro \\X2\\00D1\\X0\\", "Muro \xC3\x91"},
        {"\\X2\\00C100e920AC\\X0\\z", "\xC3\x81\xC3\xA9\xE2\x82\xAC" "z"},
        {"\\X2\\004142\\X0\\", "AB"},
        {"a\\X2\\0041\\X0\\b\\X2\\0042\\X0\\c", "aAbBc"},
        {"\\X2\\\\X0\\x", "x"},
        {"a\\X2\\D83DDE00\\X0\\b", "a\xF0\x9F\x98\x80" "b"},
        // Bad groups and lone surrogates are dropped without a mark.
        {"\\X2\\00ZZ0041\\X0\\", "A"},
        {"\\X2\\DFFF0043D800\\X0\\", "C"},
        {"\\X2\\D83D0041\\X0\\", "A"},
        // \X4\: eight hex digits a character; past U+10FFFF is dropped.
        {"\\X4\\0001F6000000004B\\X0\\", "\xF0\x9F\x98\x80K"},
        {"\\X4\\00110000\\X0\\ok", "ok"},
        // \X\: two hex digits, an ISO 8859-1 character.
        {"a\\X\\F1b", "a\xC3\xB1" "b"},
        {"\\X\\e9t\\X\\E9", "\xC3\xA9t\xC3\xA9"},
        {"\\X\\4142", "A42"},
        {"\\X\\80", "\xC2\x80"},
        // \S\: the character plus 128 in the page in force, ISO 8859-1 first;
        // an apostrophe after it is the doubled one of a string.
        {"\\S\\X8 \\S\\`15", "\xC3\x98" "8 \xC3\xA0" "15"},
        {"Kg/m\\S\\2", "Kg/m\xC2\xB2"},
        {"T\\S\\\\r", "T\xC3\x9Cr"},
        {"\\S\\''", "\xC2\xA7"},
        // \PA\ to \PI\ choose ISO 8859-1 to 8859-9 for the \S\ that follow.
        {"\\PB\\\\S\\9\\PA\\\\S\\9", "\xC5\xA1\xC2\xB9"},
        {"\\PE\\\\S\\P", "\xD0\xB0"},
        {"\\PH\\\\S\\!", "\xEF\xBF\xBD"}, // a hole of 8859-8
        // A doubled backslash is one; apostrophes undouble.
        {"C:\\\\Planos", "C:\\Planos"},
        {"O''Brien ''A''", "O'Brien 'A'"},
        {"D''", "D'"},
        // Malformed escapes keep their backslash; no "\X0\" makes \X2\ plain
        // text, and what follows is still read.
        {"\\PZ\\Muro", "\\PZ\\Muro"},
        {"\\S\\", "\\S\\"},
        {"\\X\\4", "\\X\\4"},
        {"a\\X2\\00D1b", "a\\X2\\00D1b"},
        {"\\X2\\00D1 \\X\\F1", "\\X2\\00D1 \xC3\xB1"},
        {"\\X4\\0041", "\\X4\\0041"},
        {"fin\\", "fin\\"},
        {"\\Q\\", "\\Q\\"},
        // Text with neither a backslash nor an apostrophe stands.
        {"\xC3\x91" "and\xC3\xBA X2 $", "\xC3\x91" "and\xC3\xBA X2 $"},
        // Bytes that are not UTF-8 are ISO 8859-1; escapes still decode.
        {"Hormig\xF3n", "Hormig\xC3\xB3n"},
        {"\xD1" "and\\X\\FA ''x''", "\xC3\x91" "and\xC3\xBA 'x'"},
        {"\xC3", "\xC3\x83"},
    };
    for (const Caso& c : casos) EXPECT_EQ(decodificarTextoSTEP(c.escrito), c.esperado) << c.escrito;
}

TEST(DecodificarTextoSTEP, MalformedEscapesEndInTimeAndGiveUTF8) {
    // Long runs of broken escapes, each an escape opening that never closes.
    for (const char* trozo : {"\\X2\\", "\\X4\\", "\\X\\", "\\S\\", "\\P", "\\", "''", "\xFF"}) {
        std::string texto;
        for (int i = 0; i < 20000; ++i) texto += trozo;
        const std::string r = decodificarTextoSTEP(texto);
        EXPECT_TRUE(esUTF8Valido(r)) << trozo;
        EXPECT_LE(r.size(), texto.size() * 2) << trozo;
    }
}

// Enumerations lose their dots; a typed value gives what stands between its
// first "(" and its last ")" as written, the dots of an enumeration kept;
// an untyped value is cleaned text.
TEST(LeerValorNominal, EnumerationsTypedAndUntypedValues) {
    const std::pair<const char*, const char*> casos[] = {
        {".T.", "T"},
        {" .ELEMENT. ", "ELEMENT"},
        {".ELEMENTO\xD1.", "ELEMENTO\xC3\x91"},
        {"..", ""},
        {"$", ""},
        {" $\t", ""},
        {"IFCLABEL('x')", "x"},
        {"IFCLENGTHMEASURE(2.5)", "2.5"},
        {"IFCLENGTHMEASURE(0.200)", "0.200"},
        {"IFCTHERMALTRANSMITTANCEMEASURE(1.50E-1)", "1.50E-1"},
        {"IFCINTEGER(007)", "007"},
        {"IFCLABEL('Muro (200)')", "Muro (200)"},
        {"IFCBOOLEAN(.T.)", ".T."},
        {"IFCLABEL($)", ""},
        {"IFCTEXT('O''Brien')", "O'Brien"},
        {"IFCLABEL('Muro \\X2\\00D1\\X0\\')", "Muro \xC3\x91"},
        {"'Hormig\\X\\F3n'", "Hormig\xC3\xB3n"},
        {"12.50", "12.50"},
        {"1500.", "1500."},
        {".5", ".5"},
        {"*", ""},
        {"'a(b'", "a(b"},
    };
    for (const auto& [escrito, valor] : casos) EXPECT_EQ(leerValorNominal(escrito), valor) << escrito;
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
    const std::pair<const char*, std::optional<std::int64_t>> casos[] = {
        {"#12", 12}, {" \t#12\xC2\xA0", 12}, {"#-4", -4}, {"#+4", 4}, {"#9223372036854775807", INT64_MAX},
        {"$", {}},   {"12", {}},   {"#", {}},   {"#12a", {}}, {"# 12", {}}, {"#1.5", {}}, {"#+-4", {}},
        {"#9223372036854775808", {}}, {"(#12)", {}}};
    for (const auto& [escrito, numero] : casos) EXPECT_EQ(leerReferencia(escrito), numero) << escrito;
}

TEST(LectorSentenciasSTEP, FindsStatementsByTheSyntaxWhateverTheLines) {
    struct Caso {
        std::string texto;
        Textos sentencias;
    };
    const Caso casos[] = {
        // Several to a line, and a whole file on one line with its header.
        {"#1=A('a');#2=B((#1,#3)); #3=C($);",
         {"#1=A('a');", "#2=B((#1,#3));", "#3=C($);"}},
        {"ISO-10303-21;HEADER;FILE_NAME('x;#9=IFCWALL();','y');ENDSEC;DATA;#1=A('a');ENDSEC;"
         "END-ISO-10303-21;",
         {"#1=A('a');"}},
        // LF, CRLF and CR alone between statements.
        {"#1=A();\n#2=B();\r\n#3=C();\r#4=D();\r\r\n", {"#1=A();", "#2=B();", "#3=C();", "#4=D();"}},
        // Broken over lines, inside and outside strings: the line ends go
        // with the blanks and tabs around them.
        {"#1=A('Muro \r\n\t exterior',\n  #2\n  ,$);", {"#1=A('Muroexterior',#2,$);"}},
        {"#1=A('a',\r\r  'b');", {"#1=A('a','b');"}},
        // A ";" or a "#" inside a string belongs to it; doubled apostrophes
        // toggle twice.
        {"#1=A('x;y','#2=B();');#3=C('O''Brien;');",
         {"#1=A('x;y','#2=B();');", "#3=C('O''Brien;');"}},
        // Comments between statements and inside one go; inside a string a
        // comment is text.
        {"/* #9=X(); */#1=A(/* a; */'b'); /* c */\n/**/#2=B('/* d */');",
         {"#1=A('b');", "#2=B('/* d */');"}},
        // Blanks, Unicode blanks and control bytes before a statement.
        {"\xC2\xA0\t#1=A();\x01\x7F\xE3\x80\x80#2=B();", {"#1=A();", "#2=B();"}},
        // The last statement without its ";", and one cut inside a string or
        // a comment.
        {"#1=A();\n#2=B('x')", {"#1=A();", "#2=B('x')"}},
        {"#1=A('x;\n#2=B();", {"#1=A('x;#2=B();"}},
        {"#1=A();#2=B(/* x;", {"#1=A();", "#2=B("}},
        // Anything that does not begin with "#" is passed over up to its ";".
        {"DATA;\nX=1;#1=A();\nENDSEC;", {"#1=A();"}},
        {"", {}},
        {" \r\n\t", {}},
    };
    for (const Caso& c : casos) {
        Textos leidas;
        recorrerSentenciasSTEP(c.texto, [&](std::string_view s, bool) { leidas.emplace_back(s); });
        EXPECT_EQ(leidas, c.sentencias) << c.texto;
    }
}

TEST(LectorSentenciasSTEP, OnlyRejoinedStatementsLiveInTheBuffer) {
    const std::string texto = "#1=A('a');\n#2=B('b',\n'c');\n#3=C();";
    std::vector<bool> estables;
    recorrerSentenciasSTEP(texto, [&](std::string_view s, bool estable) {
        estables.push_back(estable);
        const bool dentro = s.data() >= texto.data() && s.data() + s.size() <= texto.data() + texto.size();
        EXPECT_EQ(dentro, estable) << s;
    });
    EXPECT_EQ(estables, (std::vector<bool>{true, false, true}));
}

// A text read in two parts at once gives the table it gives read whole: where
// the middle falls between statements, inside a string or a comment that
// holds a likely statement start, and where the second part takes a number
// back from the first.
TEST(TablaEntidadesIFC, TwoPartsGiveTheTableOfOneReading) {
    const auto relleno = [](int desde, int n) {
        std::string r;
        for (int i = desde; i < desde + n; ++i)
            r += "#" + std::to_string(i) + "=IFCWALL('M" + std::to_string(i) + "',$);\n";
        return r;
    };
    std::string trampa; // a likely statement start inside a string
    for (int i = 0; i < 40; ++i) trampa += "x;\n#3=IFCSLAB('falsa');";
    const std::string casos[] = {
        relleno(1, 40) + relleno(100, 40),
        "#1=IFCWALL('" + trampa + "');\n#2=IFCSLAB('b');",
        "#1=IFCWALL('a');/*" + trampa + "*/#2=IFCSLAB('b');",
        // #5 is a wall in the first half, a point (not kept) in the second;
        // #7 is rejoined over lines in the second half.
        "#5=IFCWALL('a');\n" + relleno(10, 60) + "#5=IFCCARTESIANPOINT((0.,0.,0.));\n#7=IFCSLAB('x',\n'y');",
        "#1=IFCWALL('a');" + relleno(10, 30).substr(0, 200) + "#9=IFCSLAB('sin fin'",
    };
    const auto productos = [](const ClaseIFC& c) { return c.esProducto(); };
    for (const std::string& texto : casos) {
        const TablaEntidadesIFC entera(texto, productos, SIZE_MAX);
        const TablaEntidadesIFC partida(texto, productos, 0);
        ASSERT_EQ(partida.entidades().size(), entera.entidades().size()) << texto;
        for (std::size_t i = 0; i < entera.entidades().size(); ++i) {
            const EntidadIFC& a = entera.entidades()[i];
            const EntidadIFC& b = partida.entidades()[i];
            EXPECT_EQ(std::tie(a.id, a.args, a.tipo), std::tie(b.id, b.args, b.tipo)) << texto;
            EXPECT_EQ(entera.vigente(i), partida.vigente(i)) << a.id;
        }
        for (std::int64_t id = 0; id < 200; ++id)
            EXPECT_EQ(entera.buscar(id) != nullptr, partida.buscar(id) != nullptr) << id << " in " << texto;
    }
}
