namespace Quorix.Folio
{
    /// <summary>How a list's or a page's numbers are written.</summary>
    public enum NumberStyle
    {
        /// <summary>1, 2, 3.</summary>
        Arabic = 0,
        /// <summary>I, II, III.</summary>
        UppercaseRoman = 1,
        /// <summary>i, ii, iii.</summary>
        LowercaseRoman = 2,
        /// <summary>A, B, C.</summary>
        UppercaseLetter = 3,
        /// <summary>a, b, c.</summary>
        LowercaseLetter = 4,
        /// <summary>1st, 2nd, 3rd.</summary>
        Ordinal = 5,
        /// <summary>One, Two, Three, as cardinal words.</summary>
        Number = 6,
        /// <summary>First, Second, Third, as ordinal words.</summary>
        OrdinalText = 7,
        /// <summary>01, 02, 03.</summary>
        LeadingZero = 22,
        /// <summary>A bullet instead of a number.</summary>
        Bullet = 23,
        /// <summary>No number.</summary>
        None = 255,
    }
}

namespace Quorix.Folio.Lists
{
    /// <summary>A predefined list to start a new list from.</summary>
    public enum ListTemplate
    {
        /// <summary>Bullets, the default kind.</summary>
        BulletDefault = 0,
        /// <summary>Filled round bullets.</summary>
        BulletDisk = 1,
        /// <summary>Hollow round bullets.</summary>
        BulletCircle = 2,
        /// <summary>Square bullets.</summary>
        BulletSquare = 3,
        /// <summary>Numbers, the default kind: 1. 2. 3.</summary>
        NumberDefault = 4,
        /// <summary>Numbers followed by a dot: 1. 2. 3.</summary>
        NumberArabicDot = 5,
        /// <summary>Numbers followed by a parenthesis: 1) 2) 3).</summary>
        NumberArabicParenthesis = 6,
        /// <summary>Upper-case Roman numerals with a dot: I. II. III.</summary>
        NumberUppercaseRomanDot = 7,
        /// <summary>Lower-case Roman numerals with a dot: i. ii. iii.</summary>
        NumberLowercaseRomanDot = 8,
        /// <summary>Upper-case letters with a dot: A. B. C.</summary>
        NumberUppercaseLetterDot = 9,
        /// <summary>Lower-case letters with a parenthesis: a) b) c).</summary>
        NumberLowercaseLetterParenthesis = 10,
        /// <summary>Outline numbering whose levels nest: 1. 1.1. 1.1.1.</summary>
        OutlineNumbers = 11,
    }

    /// <summary>How a list label is aligned at its position.</summary>
    public enum ListLevelAlignment
    {
        /// <summary>The label starts at its position.</summary>
        Left = 0,
        /// <summary>The label is centred on its position.</summary>
        Center = 1,
        /// <summary>The label ends at its position.</summary>
        Right = 2,
    }

    /// <summary>What separates a list label from the paragraph's text.</summary>
    public enum ListTrailingCharacter
    {
        /// <summary>A tab.</summary>
        Tab = 0,
        /// <summary>A space.</summary>
        Space = 1,
        /// <summary>Nothing: the text follows the label directly.</summary>
        Nothing = 2,
    }
}
