namespace Quorix.Folio
{
    public enum NumberStyle
    {
        Arabic = 0,
        UppercaseRoman = 1,
        LowercaseRoman = 2,
        UppercaseLetter = 3,
        LowercaseLetter = 4,
        Ordinal = 5,
        Number = 6,
        OrdinalText = 7,
        LeadingZero = 22,
        Bullet = 23,
        None = 255,
    }
}

namespace Quorix.Folio.Lists
{
    public enum ListTemplate
    {
        BulletDefault = 0,
        BulletDisk = 1,
        BulletCircle = 2,
        BulletSquare = 3,
        NumberDefault = 4,
        NumberArabicDot = 5,
        NumberArabicParenthesis = 6,
        NumberUppercaseRomanDot = 7,
        NumberLowercaseRomanDot = 8,
        NumberUppercaseLetterDot = 9,
        NumberLowercaseLetterParenthesis = 10,
        OutlineNumbers = 11,
    }

    public enum ListLevelAlignment
    {
        Left = 0,
        Center = 1,
        Right = 2,
    }

    public enum ListTrailingCharacter
    {
        Tab = 0,
        Space = 1,
        Nothing = 2,
    }
}
