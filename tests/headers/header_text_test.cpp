// The C and assembly text of single types.

#include "support/loaded.h"

#include "model/aggregates.h"
#include "model/scalars.h"

using namespace Qt::StringLiterals;

namespace {

QString typedefOf(const QString &content, const QString &type)
{
    const Loaded soc = Loaded::archive(content);
    return soc.root().getTemplate(type)->c_typedefSerialize();
}

/// The member lines of a module with \a content.
QString membersOf(const QString &content)
{
    QString text = typedefOf(u"<module name='m'>"_s + content + u"</module>"_s, u"m"_s);
    text.remove(u"typedef volatile struct\n{\n"_s).remove(u"} HWP_M_T;\n"_s);
    return text;
}

QString macrosOf(const QString &content, const QString &type)
{
    const Loaded soc = Loaded::archive(content);
    QStringList used;
    return soc.root().getTemplate(type)->macro_serialize(type.toUpper(), used);
}

} // namespace

TEST(CTypes, Structure)
{
    EXPECT_EQ(typedefOf(u"<var name='uart_nb_chan' value='3'/><module name='uart'>"_s
                        "<reg32 name='ctrl'><comment>Control register</comment></reg32><hole size='32'/>"
                        "<reg32 name='chan' count='uart_nb_chan'/>"
                        "<struct name='fifo'><uint8 name='data'/><uint8 name='level'/></struct>"
                        "<memory name='buf' size='16'><comment>not written</comment></memory>"
                        "<reg16 name='word'><l name='word_lo'/><h name='word_hi'/></reg16></module>"_s,
                        u"uart"_s),
              uR"(typedef volatile struct
{
    /// Control register
    REG32                          ctrl;                         //0x00000000
    REG32 Reserved_00000004;                    //0x00000004
    REG32                          chan[UART_NB_CHAN];           //0x00000008
    struct
    {
        UINT8                      data;                         //0x00000014
        UINT8                      level;                        //0x00000015
    } fifo;
    UINT8 buf[16];                              //0x00000018
    union {
    REG16                          word;                         //0x00000028
        struct {
            REG8 word_lo;
            REG8 word_hi;
        };
    };
} HWP_UART_T;
)"_s);
}

TEST(CTypes, TypedefsAliasesAndEnums)
{
    EXPECT_EQ(typedefOf(u"<alias name='status'><reg32 name='s'><bits name='enable' pos='0'/>"_s
                        "<bits name='speed' pos='5:3'/></reg32></alias>"_s,
                        u"status"_s),
              uR"(typedef struct
{
    REG32                          enable:1;
    REG32                          speed:3;
} STATUS_T;)"_s);
    EXPECT_EQ(typedefOf(u"<typedef name='pair'><uint8 name='a'/><uint8 name='b'/></typedef>"_s, u"pair"_s),
              uR"(typedef struct
{
    UINT8                          a;                            //0x00000000
    UINT8                          b;                            //0x00000001
} PAIR_T; //Size : 0x2
)"_s);
    EXPECT_EQ(typedefOf(u"<alias name='word'><uint32 name='u' ckeywords='const'/></alias>"_s, u"word"_s),
              u"typedef const UINT32 WORD_T;"_s);
    EXPECT_EQ(typedefOf(u"<var name='n' value='16'/><alias name='buf'><uint8 name='u' count='n'/></alias>"_s, u"buf"_s),
              u"typedef UINT8 BUF_T[N];"_s);
    EXPECT_EQ(typedefOf(u"<alias name='link'><ptr name='p' type='UINT32'/></alias>"_s, u"link"_s),
              u"typedef UINT32* LINK_T;"_s);
    EXPECT_EQ(typedefOf(u"<typedef name='t'/><alias name='again'><instance name='i' type='t'/></alias>"_s, u"again"_s),
              u"typedef T_T AGAIN_T;"_s);

    const Loaded soc = Loaded::archive(
        u"<enum name='mode'><entry name='mode_off'><comment>idle</comment></entry><entry name='mode_on' value='0-1'/>"_s
        "</enum><var name='uart_nb_chan' value='2'/><var name='uart_depth' value='uart_nb_chan*0x1f'/>"
        "<spacer><comment>limits</comment></spacer><range name='r' left='1' right='0'/>"_s);
    EXPECT_EQ(soc.archiveAt(0).variables->enums.at(0)->c_serialize(0), uR"(typedef enum {
/// idle
    MODE_OFF                                    = 0x00000000,
    MODE_ON                                     = 0xFFFFFFFF
} MODE_T;)"_s);
    QString text;
    for (const VMIntVar &variable : soc.archiveAt(0).variables->sliced(2))
        text += variable.c_serialize(false);
    EXPECT_EQ(text, uR"(#define UART_NB_CHAN                             (2)
#define UART_DEPTH                               (UART_NB_CHAN*0X1F)

/// limits
)"_s);
}

TEST(CTypes, Holes)
{
    const std::pair<QString, QString> rows[] = {
        {u"<reg32 name='a'/><hole size='64'/>"_s, u"REG32 Reserved_00000004[2];                 //0x00000004"_s},
        {u"<reg16 name='a'/><hole size='64'/>"_s, u"REG16 Reserved_00000002[4];                 //0x00000002"_s},
        {u"<reg8 name='a' count='3'/><hole size='64'/>"_s,
         u"REG8 Reserved_00000003[8];                  //0x00000003"_s},
        {u"<reg8 name='a' count='8'/><hole size='24'/>"_s,
         u"REG8 Reserved_00000008[3];                  //0x00000008"_s},
        {u"<reg8 name='a' count='8'/><hole size='16'/>"_s,
         u"REG16 Reserved_00000008;                    //0x00000008"_s},
        {u"<reg8 name='a' count='8'/><hole size='4'/>"_s,
         u"// REG8 Reserved_00000008;                  //0x00000008"_s},
        {u"<reg8 name='a' count='4'/><memory name='none' size='0'/>"_s,
         u"// UINT8 none[0];                           //0x00000004"_s},
    };
    for (const auto &[content, line] : rows)
        EXPECT_EQ(membersOf(content).split(u'\n').value(1), u"    "_s + line);
}

TEST(CTypes, InnerInstancesAndArrays)
{
    const QString text = typedefOf(
        u"<module name='inner'><comment>In</comment><reg name='r'/></module>"_s
        "<alias name='row'><uint8 name='u' count='2'/></alias><module name='m'>"
        "<instance name='one' type='inner'/><instance name='many' type='inner' count='2' ckeywords='far'/>"
        "<instance name='rows' type='row' count='3'/>"
        "<ptr name='p' type='inner' ckeywords='const'/>"
        "<struct name='s' ckeywords='far' count='2'><comment>S</comment><uint8 name='a_name_that_is_too_long_for_it'/>"
        "</struct></module>"_s,
        u"m"_s);
    EXPECT_EQ(text, uR"(typedef volatile struct
{
volatile     /// In
    INNER_T                        one;                          //0x00000000
volatile far     /// In
    INNER_T                        many[2];                      //0x00000004
    ROW_T                          rows[3];                      //0x0000000C
    const INNER_T*                 p;                            //0x00000014
far     /// S
    struct
    {
        UINT8                      a_name_that_is_too_long_for_it; //0x00000018
    } s[2];
} HWP_M_T;
)"_s);
}

TEST(CTypes, ArraysOfNoneAreCommentedOutWhole)
{
    EXPECT_EQ(
        membersOf(u"<reg name='a' count='0'><comment>A</comment></reg><struct name='s' count='0' ckeywords='far'>"_s
                  "<reg8 name='b'/><struct name='t'><reg8 name='c'/></struct></struct>"_s),
        uR"(    /// A
    // REG32                       a[0];                         //0x00000000
// far     // struct
    // {
        // REG8                       b;                            //0x00000000
        // struct
        // {
            // REG8                   c;                            //0x00000001
        // } t;
    // } s[0];
)"_s);
}

TEST(Macros, NamesAreDefinedOnce)
{
    EXPECT_EQ(
        macrosOf(
            u"<module name='uart'><reg name='ctrl'><bits name='enable' pos='0'/><bits name='speed' pos='3:1'>"_s
            "<options><default/><mask/><shift/><option name='slow'/><option name='fast' value='5'/></options>"
            "</bits><bits name='count' pos='15:8'/><bits name='mode' pos='21:16'><options><option name='off'/>"
            "<option name='on' value='33'/></options></bits></reg><reg name='plain'/>"
            "<struct name='s' count='2'><reg name='status'><bits name='enable' pos='0'/></reg></struct></module>"_s,
            u"uart"_s),
        uR"(//ctrl
#define UART_ENABLE                 (1<<0)
#define UART_SPEED(n)               (((n)&7)<<1)
#define UART_SPEED_MASK             (7<<1)
#define UART_SPEED_SHIFT            (1)
#define UART_SPEED_SLOW             (0<<1)
#define UART_SPEED_FAST             (5<<1)
#define UART_COUNT(n)               (((n)&0xFF)<<8)
#define UART_MODE_OFF               (0x0<<16)
#define UART_MODE_ON                (0x21<<16)

//status
//#define UART_ENABLE               (1<<0)

)"_s);
}

TEST(Macros, WidthsGroupsAndEnums)
{
    EXPECT_EQ(macrosOf(u"<enum name='e'><entry name='A'/></enum><module name='m'><instance name='i' type='e'/>"_s
                       "<reg name='r' count='2'><bits name='five' pos='4:0'/><bits name='all' pos='31:0'/>"
                       "<bits name='cut' pos='11:8' cut='2' cutprefix='c'><options><option name='neg' value='0-1'/>"
                       "</options></bits><bitgroup name='gap'><entry ref='c_0'/><entry ref='five'/></bitgroup>"
                       "<bitgroup name='none'/></reg></module>"_s,
                       u"m"_s),
              uR"(//r
#define M_FIVE(n)                   (((n)&31)<<0)
#define M_ALL(n)                    (((n)&0xFFFFFFFF)<<0)
#define M_C_0_NEG                   (4294967295<<8)
#define M_C_1_NEG                   (4294967295<<10)
#define M_CUT(n)                    (((n)&15)<<8)
#define M_CUT_MASK                  (15<<8)
#define M_CUT_SHIFT                 (8)
#define M_GAP(n)                    (((n)&0x31F)<<0)
#define M_GAP_MASK                  (0x31F<<0)
#define M_GAP_SHIFT                 (0)
#define M_NONE                      (0<<32)
#define M_NONE_MASK                 (0<<32)
#define M_NONE_SHIFT                (32)

)"_s);
    EXPECT_EQ(macrosOf(u"<enum name='e'><entry name='A'/></enum>"_s, u"e"_s), QString());
}

TEST(Macros, UsedNamesTravel)
{
    const Loaded soc = Loaded::archive(u"<alias name='a'><reg name='r'><bits name='f' pos='0'/></reg></alias>"_s);
    QStringList used = {u"A_F"_s};
    EXPECT_EQ(soc.root().getTemplate(u"a"_s)->macro_serialize(u"A"_s, used),
              u"//r\n//#define A_F                       (1<<0)\n\n"_s);
    EXPECT_EQ(used, QStringList(u"A_F"_s));
    EXPECT_EQ(soc.type<VMValuable>(u"a"_s).bitFields.at(0)->macro_serialize(u"B"_s, used),
              u"#define B_F                         (1<<0)\n"_s);
    EXPECT_EQ(used, QStringList({u"A_F"_s, u"B_F"_s}));
}

TEST(Assembly, AddressesOfEveryInstance)
{
    const Loaded soc =
        Loaded::archive(u"<module name='m'><reg name='r'/><struct name='s'><reg8 name='v' count='2'/></struct>"_s
                        "<struct name='x' count='2'><reg8 name='y'/></struct><hole size='16'/>"
                        "<reg8 name='z' count='0'/></module>"
                        "<instance name='A' type='m' address='0x10'/><instance name='B_' type='m'/>"_s);
    testing::internal::CaptureStdout();
    const VMXMLElement *module = soc.root().getTemplate(u"m"_s);
    EXPECT_EQ(module->asm_content(), uR"(#define REG_A_BASE                  0x00000010
#define REG_B__BASE                 0x00000000

#define REG_A_BASE_HI               BASE_HI(REG_A_BASE)
#define REG_A_BASE_LO               BASE_LO(REG_A_BASE)

#define REG_A_R                     REG_A_BASE_LO + 0x00000000
#define REG_AS_V_0                  REG_A_BASE_LO + 0x00000004
#define REG_AS_V_1                  REG_A_BASE_LO + 0x00000005
#define REG_A_X_0_Y                 REG_A_BASE_LO + 0x00000006
#define REG_A_X_1_Y                 REG_A_BASE_LO + 0x00000007

#define REG_B__BASE_HI              BASE_HI(REG_B__BASE)
#define REG_B__BASE_LO              BASE_LO(REG_B__BASE)

#define REG_B__R                    REG_B__BASE_LO + 0x00000000
#define REG_B_S_V_0                 REG_B__BASE_LO + 0x00000004
#define REG_B_S_V_1                 REG_B__BASE_LO + 0x00000005
#define REG_B_X_0_Y                 REG_B__BASE_LO + 0x00000006
#define REG_B_X_1_Y                 REG_B__BASE_LO + 0x00000007

)"_s);
    EXPECT_EQ(soc.root().c_getMatchingInstancesInstanciation(module),
              u"#define hwp_a                       ((HWP_M_T*) KSEG1(REG_A_BASE))\n"_s
              "#define hwp_b_                      ((HWP_M_T*) KSEG1(REG_B__BASE))\n\n"_s);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "m\nm\n");
}
