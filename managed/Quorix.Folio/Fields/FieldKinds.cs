namespace Quorix.Folio.Fields;

/// <summary>The field kinds by the first word of their code, and the class that computes each.</summary>
internal static class FieldKinds
{
    private static readonly Dictionary<string, (FieldType Type, Func<Field>? Make)> Table = new(StringComparer.OrdinalIgnoreCase)
    {
        ["DATE"] = (FieldType.FieldDate, () => new FieldDate()),
        ["TIME"] = (FieldType.FieldTime, () => new FieldTime()),
        ["CREATEDATE"] = (FieldType.FieldCreateDate, () => new FieldCreateDate()),
        ["SAVEDATE"] = (FieldType.FieldSaveDate, () => new FieldSaveDate()),
        ["PRINTDATE"] = (FieldType.FieldPrintDate, () => new FieldPrintDate()),
        ["EDITTIME"] = (FieldType.FieldEditTime, () => new FieldEditTime()),
        ["AUTHOR"] = (FieldType.FieldAuthor, () => new FieldAuthor()),
        ["TITLE"] = (FieldType.FieldTitle, () => new FieldTitle()),
        ["SUBJECT"] = (FieldType.FieldSubject, () => new FieldSubject()),
        ["KEYWORDS"] = (FieldType.FieldKeyword, () => new FieldKeywords()),
        ["COMMENTS"] = (FieldType.FieldComments, () => new FieldComments()),
        ["LASTSAVEDBY"] = (FieldType.FieldLastSavedBy, () => new FieldLastSavedBy()),
        ["TEMPLATE"] = (FieldType.FieldTemplate, () => new FieldTemplate()),
        ["REVNUM"] = (FieldType.FieldRevisionNum, () => new FieldRevNum()),
        ["FILENAME"] = (FieldType.FieldFileName, () => new FieldFileName()),
        ["FILESIZE"] = (FieldType.FieldFileSize, () => new FieldFileSize()),
        ["NUMWORDS"] = (FieldType.FieldNumWords, () => new FieldNumWords()),
        ["NUMCHARS"] = (FieldType.FieldNumChars, () => new FieldNumChars()),
        ["DOCPROPERTY"] = (FieldType.FieldDocProperty, () => new FieldDocProperty()),
        ["DOCVARIABLE"] = (FieldType.FieldDocVariable, () => new FieldDocVariable()),
        ["INFO"] = (FieldType.FieldInfo, () => new FieldInfo()),
        ["USERNAME"] = (FieldType.FieldUserName, () => new FieldUserName()),
        ["USERINITIALS"] = (FieldType.FieldUserInitials, () => new FieldUserInitials()),
        ["USERADDRESS"] = (FieldType.FieldUserAddress, () => new FieldUserAddress()),
        ["REF"] = (FieldType.FieldRef, () => new FieldRef()),
        ["NOTEREF"] = (FieldType.FieldNoteRef, () => new FieldNoteRef()),
        ["STYLEREF"] = (FieldType.FieldStyleRef, () => new FieldStyleRef()),
        ["QUOTE"] = (FieldType.FieldQuote, () => new FieldQuote()),
        ["SET"] = (FieldType.FieldSet, () => new FieldSet()),
        ["ASK"] = (FieldType.FieldAsk, () => new FieldAsk()),
        ["FILLIN"] = (FieldType.FieldFillIn, () => new FieldFillIn()),
        ["IF"] = (FieldType.FieldIf, () => new FieldIf()),
        ["COMPARE"] = (FieldType.FieldCompare, () => new FieldCompare()),
        ["="] = (FieldType.FieldFormula, () => new FieldFormula()),
        ["SEQ"] = (FieldType.FieldSeq, () => new FieldSeq()),
        ["AUTONUM"] = (FieldType.FieldAutoNum, () => new FieldAutoNum()),
        ["AUTONUMLGL"] = (FieldType.FieldAutoNumLegal, () => new FieldAutoNumLgl()),
        ["AUTONUMOUT"] = (FieldType.FieldAutoNumOutline, () => new FieldAutoNumOut()),
        ["LISTNUM"] = (FieldType.FieldListNum, () => new FieldListNum()),
        ["SYMBOL"] = (FieldType.FieldSymbol, () => new FieldSymbol()),
        ["HYPERLINK"] = (FieldType.FieldHyperlink, () => new FieldHyperlink()),
        ["INCLUDETEXT"] = (FieldType.FieldIncludeText, () => new FieldIncludeText()),
        ["TOC"] = (FieldType.FieldTOC, () => new FieldToc()),
        ["TC"] = (FieldType.FieldTOCEntry, () => new FieldTC()),
        ["XE"] = (FieldType.FieldIndexEntry, () => new FieldXE()),
        ["MERGEFIELD"] = (FieldType.FieldMergeField, () => new FieldMergeField()),
        ["NEXT"] = (FieldType.FieldNext, () => new FieldNext()),
        ["NEXTIF"] = (FieldType.FieldNextIf, () => new FieldNextIf()),
        ["SKIPIF"] = (FieldType.FieldSkipIf, () => new FieldSkipIf()),
        ["MERGEREC"] = (FieldType.FieldMergeRec, () => new FieldMergeRec()),
        ["MERGESEQ"] = (FieldType.FieldMergeSeq, () => new FieldMergeSeq()),
        ["FORMTEXT"] = (FieldType.FieldFormTextInput, () => new FieldFormText()),
        ["FORMCHECKBOX"] = (FieldType.FieldFormCheckBox, () => new FieldFormCheckBox()),
        ["FORMDROPDOWN"] = (FieldType.FieldFormDropDown, () => new FieldFormDropDown()),
        // Kinds recognised whose results come from elsewhere (page layout) or are kept as read.
        ["PAGE"] = (FieldType.FieldPage, () => new FieldPage()), ["NUMPAGES"] = (FieldType.FieldNumPages, () => new FieldNumPages()),
        ["SECTIONPAGES"] = (FieldType.FieldSectionPages, () => new FieldSectionPages()), ["PAGEREF"] = (FieldType.FieldPageRef, () => new FieldPageRef()),
        ["SECTION"] = (FieldType.FieldSection, null), ["INDEX"] = (FieldType.FieldIndex, () => new FieldIndex()),
        ["TOA"] = (FieldType.FieldTOA, () => new FieldToa()), ["TA"] = (FieldType.FieldTOAEntry, () => new FieldTA()),
        ["INCLUDEPICTURE"] = (FieldType.FieldIncludePicture, () => new FieldIncludePicture()), ["BARCODE"] = (FieldType.FieldBarcode, () => new FieldBarcode()),
        ["DISPLAYBARCODE"] = (FieldType.FieldDisplayBarcode, () => new FieldDisplayBarcode()), ["CITATION"] = (FieldType.FieldCitation, () => new FieldCitation()),
        ["BIBLIOGRAPHY"] = (FieldType.FieldBibliography, () => new FieldBibliography()),
        ["EQ"] = (FieldType.FieldEquation, () => new FieldEQ()), ["ADVANCE"] = (FieldType.FieldAdvance, null),
        ["MACROBUTTON"] = (FieldType.FieldMacroButton, null), ["GOTOBUTTON"] = (FieldType.FieldGoToButton, null),
        ["LINK"] = (FieldType.FieldLink, null), ["EMBED"] = (FieldType.FieldEmbed, null),
        ["ADDRESSBLOCK"] = (FieldType.FieldAddressBlock, null), ["GREETINGLINE"] = (FieldType.FieldGreetingLine, null),
        ["PRINT"] = (FieldType.FieldPrint, null), ["PRIVATE"] = (FieldType.FieldPrivate, null),
        ["SHAPE"] = (FieldType.FieldShape, null), ["AUTOTEXT"] = (FieldType.FieldAutoText, null),
        ["AUTOTEXTLIST"] = (FieldType.FieldAutoTextList, null), ["BIDIOUTLINE"] = (FieldType.FieldBidiOutline, null),
        ["DATABASE"] = (FieldType.FieldDatabase, null), ["DDE"] = (FieldType.FieldDDE, null),
        ["DDEAUTO"] = (FieldType.FieldDDEAuto, null), ["GLOSSARY"] = (FieldType.FieldGlossary, null),
        ["IMPORT"] = (FieldType.FieldImport, null), ["INCLUDE"] = (FieldType.FieldInclude, null),
        ["MERGEBARCODE"] = (FieldType.FieldMergeBarcode, null), ["ADDIN"] = (FieldType.FieldAddin, null),
        ["OCX"] = (FieldType.FieldOcx, null), ["RD"] = (FieldType.FieldRefDoc, null), ["DATA"] = (FieldType.FieldData, null),
        ["FOOTNOTEREF"] = (FieldType.FieldFootnoteRef, null),
    };

    // "=2+3" has no space after the sign: the first word is the sign alone.
    public static string FirstWord(string code)
    {
        var t = code.TrimStart();
        if (t.StartsWith('=')) return "=";
        int i = 0;
        while (i < t.Length && !char.IsWhiteSpace(t[i]) && t[i] != '\\' && t[i] != '"') i++;
        return t[..i];
    }

    public static FieldType TypeOf(string code)
    {
        var word = FirstWord(code);
        if (word.Length == 0) return FieldType.FieldNone;
        return Table.TryGetValue(word, out var k) ? k.Type : FieldType.FieldUnknown;
    }

    public static string? WordOf(FieldType type)
    {
        foreach (var (word, kind) in Table)
            if (kind.Type == type) return word;
        return null;
    }

    public static Field Create(FieldStart start, FieldSeparator? separator, FieldEnd end)
    {
        var word = FirstWord(Field.CodeText(start, (Node?)separator ?? end));
        Field f = Table.TryGetValue(word, out var k) ? k.Make?.Invoke() ?? new FieldRecognised() : new FieldUnknown();
        return f.Attach(start, separator, end);
    }
}

/// <summary>A field whose code this engine does not know: its result is kept as it is.</summary>
public sealed class FieldUnknown : Field
{
    internal FieldUnknown() { }

    // A code that is only a bookmark's name shows that bookmark, as REF would.
    internal override string? Compute(FieldUpdateContext ctx)
    {
        var code = ParseCode();
        return code.Args.Count == 0 && !code.Switches.Any() && ctx.FindBookmark(code.Name) != null ? FieldRef.Resolve(code, ctx) : null;
    }
}

// A known kind computed elsewhere or not at all: the result stays until something computes it.
internal sealed class FieldRecognised : Field
{
}
