namespace Quorix.Folio.Formatting;

/// <summary>The formatting attributes the engine models, whatever format they were read from.</summary>
// Ordered by group: attributes that one setting gives together (a colour and its theme colour,
// the Latin font by name or by theme) follow each other and share their group's first member.
internal enum FormatAttr : byte
{
    // Character formatting.
    CharStyle,
    LatinFont, LatinFontAlt, LatinTheme, LatinThemeAlt,
    EastAsianFont,
    ComplexFont,
    EastAsianTheme,
    ComplexTheme,
    FontHint,
    Bold,
    BoldComplex,
    Italic,
    ItalicComplex,
    AllCaps,
    SmallCaps,
    Strike,
    DoubleStrike,
    Outline,
    Shadow,
    Emboss,
    Imprint,
    NoProof,
    Hidden,
    WebHidden,
    RightToLeft,
    ComplexScript,
    Color, ColorTheme, ColorTint, ColorShade,
    Spacing,
    Scaling,
    Kerning,
    Position,
    Size,
    SizeComplex,
    Highlight,
    Underline, UnderlineColor,
    VerticalAlign,
    Language, LanguageEastAsian, LanguageBidi,
    RunBorder,

    // Paragraph formatting. Spacing and indents are inherited value by value, except the two ways
    // of giving each indent, which replace each other.
    ParaStyle,
    KeepNext,
    KeepLines,
    PageBreakBefore,
    WidowControl,
    SpaceBefore,
    SpaceAfter,
    LineSpacing,
    LineRule,
    IndentLeft, IndentStart,
    IndentRight, IndentEnd,
    IndentHanging, IndentFirstLine,
    Alignment,
    OutlineLevel,
    ParaBidi,
    ParaBorderTop, ParaBorderLeft, ParaBorderBottom, ParaBorderRight, ParaBorderBetween,
    Tabs,

    // Shading of a run, paragraph, table or cell: one setting, so inherited whole.
    ShadingPattern, ShadingColor, ShadingFill,

    // Table formatting.
    TableStyle,
    TableBidi,
    RowBandSize,
    ColumnBandSize,
    TableWidth, TableWidthType,
    TableAlignment,
    TableIndent, TableIndentType,
    TableLayoutFixed,
    TableLook, TableLookFirstRow, TableLookLastRow, TableLookFirstColumn, TableLookLastColumn, TableLookNoRowBands, TableLookNoColumnBands,
    BorderTop, BorderLeft, BorderStart, BorderBottom, BorderRight, BorderEnd, BorderInsideH, BorderInsideV, BorderDiagonalDown, BorderDiagonalUp,

    // Row formatting.
    GridBefore,
    GridAfter,
    CantSplit,
    RowHeight, RowHeightRule,
    HeaderRow,
    RowAlignment,
    RowHidden,

    // Cell formatting.
    CellWidth, CellWidthType,
    GridSpan,
    VerticalMerge,
    NoWrap,
    CellTextDirection,
    CellVerticalAlignment,
    HideMark,

    // Section formatting.
    PageWidth, PageHeight, PageOrientation, PaperCode,
    MarginTop, MarginRight, MarginBottom, MarginLeft, MarginHeader, MarginFooter, MarginGutter,
    SectionStart,
    TitlePage,
    PageNumberStart, PageNumberFormat,
    ColumnCount, ColumnSpace, ColumnsEqual, ColumnSeparator, ColumnList,
    PageBorderOffsetFrom, PageBorderDisplay, PageBorderZOrder,
    PageBorderTop, PageBorderLeft, PageBorderBottom, PageBorderRight,
    SectionVerticalAlignment,
    SectionBidi,
    GutterRight,
    GridType, GridLinePitch, GridCharSpace,

    // List level formatting.
    LevelStart,
    LevelNumberStyle,
    LevelRestart,
    LevelParagraphStyle,
    LevelLegal,
    LevelSuffix,
    LevelText,
    LevelAlignment,
    Count,
}

/// <summary>Facts about <see cref="FormatAttr"/> members.</summary>
internal static class FormatAttrs
{
    private static readonly FormatAttr[] Groups = BuildGroups();

    private static FormatAttr[] BuildGroups()
    {
        var g = new FormatAttr[(int)FormatAttr.Count];
        for (int i = 0; i < g.Length; i++) g[i] = (FormatAttr)i;
        void Group(FormatAttr first, FormatAttr last)
        {
            for (int i = (int)first; i <= (int)last; i++) g[i] = first;
        }
        Group(FormatAttr.LatinFont, FormatAttr.LatinThemeAlt);
        Group(FormatAttr.Color, FormatAttr.ColorShade);
        Group(FormatAttr.Underline, FormatAttr.UnderlineColor);
        Group(FormatAttr.Language, FormatAttr.LanguageBidi);
        Group(FormatAttr.IndentLeft, FormatAttr.IndentStart);
        Group(FormatAttr.IndentRight, FormatAttr.IndentEnd);
        Group(FormatAttr.IndentHanging, FormatAttr.IndentFirstLine);
        Group(FormatAttr.ShadingPattern, FormatAttr.ShadingFill);
        Group(FormatAttr.TableWidth, FormatAttr.TableWidthType);
        Group(FormatAttr.TableIndent, FormatAttr.TableIndentType);
        Group(FormatAttr.RowHeight, FormatAttr.RowHeightRule);
        Group(FormatAttr.CellWidth, FormatAttr.CellWidthType);
        Group(FormatAttr.TableLook, FormatAttr.TableLookNoColumnBands);
        return g;
    }

    /// <summary>The first attribute of the group the attribute is set and inherited with.</summary>
    public static FormatAttr Group(FormatAttr a) => Groups[(int)a];
}
