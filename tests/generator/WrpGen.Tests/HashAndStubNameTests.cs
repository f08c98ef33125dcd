using Quorix.WrpGen;
using Xunit;

namespace WrpGen.Tests;

public class HashAndStubNameTests
{
    [Theory]
    [InlineData("", 0x811C9DC5u)]
    [InlineData("a", 0xE40C292Cu)]
    [InlineData("foobar", 0xBF9CF968u)]
    public void Fnv1aMatchesPublishedVectors(string text, uint expected) => Assert.Equal(expected, TypeHash.Fnv1a(text));

    [Theory]
    [InlineData("Quorix.Folio.Document", "42DC8423")]
    [InlineData("Quorix.Folio.Drawing.Charts.ChartType", "9A553F1D")]
    [InlineData("Ünïcødé", "3161A240")]  // hashed as UTF-8, not UTF-16
    [InlineData("T510", "0108973B")]     // leading zero kept: always eight digits
    public void TypeHashIsEightUpperHexDigits(string fullName, string expected) => Assert.Equal(expected, TypeHash.Of(fullName));

    [Theory]
    [InlineData("Quorix.Folio", "Document", "52BF96C5", "WrpNs_Quorix.WrpNs_Folio.WrpCs_Document_52BF96C5")]
    [InlineData("Quorix.Folio", "Hyphenation", "7ACEB09F", "WrpNs_Quorix.WrpNs_Folio.WrpCs_Hyphenat_7ACEB09F")]
    [InlineData("Quorix.Folio", "BorderType", "29C4847C", "WrpNs_Quorix.WrpNs_Folio.WrpCs_BorderTy_29C4847C")]
    [InlineData("Quorix.Folio.Drawing.Charts", "Chart", "00000001", "WrpNs_Quorix.WrpNs_Folio.WrpNs_Drawing.WrpNs_Charts.WrpCs_Chart_00000001")]
    [InlineData("", "Top", "00000002", "WrpCs_Top_00000002")]
    public void StubClassTakesEightLettersAndPrefixesEveryNamespacePart(string ns, string name, string hash, string expected) =>
        Assert.Equal(expected, StubNames.StubClass(ns, name, hash));

    [Fact]
    public void StubNamesCarryThreeDigitOverloads()
    {
        Assert.Equal("ctor_004_Document", StubNames.Ctor(4, "Document"));
        Assert.Equal("call_001_RegisterDictionary", StubNames.Call(1, "RegisterDictionary"));
        Assert.Equal("call_120_Save", StubNames.Call(120, "Save"));
        Assert.Equal("get_VbaProject", StubNames.Get("VbaProject"));
        Assert.Equal("setsa_Callback", StubNames.SetStatic("Callback"));
    }

    [Fact]
    public void BuiltinStubsFollowTheKind()
    {
        Assert.Equal(["btp_TypeOf"], StubNames.Builtins(TypeKind.StaticClass));
        Assert.Equal(StubNames.Builtins(TypeKind.Class), StubNames.Builtins(TypeKind.Struct));
        Assert.Equal("btp_AsUniEnum", StubNames.Builtins(TypeKind.Enum)[3]);
        Assert.Equal("btp_GetTpExtraBind", StubNames.Builtins(TypeKind.Interface)[^1]);
        Assert.DoesNotContain("btp_ReInterpretObj", StubNames.Builtins(TypeKind.Interface));
        Assert.Throws<ArgumentOutOfRangeException>(() => StubNames.Builtins(TypeKind.Delegate));
    }
}
