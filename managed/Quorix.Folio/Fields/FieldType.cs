namespace Quorix.Folio.Fields;

/// <summary>The kind of a field, from the first word of its code.</summary>
public enum FieldType
{
    /// <summary>Not a field: the marker belongs to no field.</summary>
    FieldNone = 0,
    /// <summary>A field whose code could not be read.</summary>
    FieldCannotParse = 1,
    /// <summary>REF: the text of a bookmark.</summary>
    FieldRef = 3,
    /// <summary>XE: an entry for the index.</summary>
    FieldIndexEntry = 4,
    /// <summary>FTNREF: the mark of a footnote.</summary>
    FieldFootnoteRef = 5,
    /// <summary>SET: gives a bookmark a value.</summary>
    FieldSet = 6,
    /// <summary>IF: one of two texts, chosen by a comparison.</summary>
    FieldIf = 7,
    /// <summary>INDEX: the document's index, built from its XE entries.</summary>
    FieldIndex = 8,
    /// <summary>TC: an entry for a table of contents.</summary>
    FieldTOCEntry = 9,
    /// <summary>STYLEREF: the text of the nearest paragraph in a style, as in running headings.</summary>
    FieldStyleRef = 10,
    /// <summary>RD: a document whose entries join this one's index and tables of contents.</summary>
    FieldRefDoc = 11,
    /// <summary>SEQ: the next number of a sequence, as in figure and table captions.</summary>
    FieldSeq = 12,
    /// <summary>TOC: a table of contents.</summary>
    FieldTOC = 13,
    /// <summary>INFO: one of the document's properties.</summary>
    FieldInfo = 14,
    /// <summary>TITLE: the document's title.</summary>
    FieldTitle = 15,
    /// <summary>SUBJECT: the document's subject.</summary>
    FieldSubject = 16,
    /// <summary>AUTHOR: the document's author.</summary>
    FieldAuthor = 17,
    /// <summary>KEYWORDS: the document's keywords.</summary>
    FieldKeyword = 18,
    /// <summary>COMMENTS: the comments of the document's properties.</summary>
    FieldComments = 19,
    /// <summary>LASTSAVEDBY: who saved the document last.</summary>
    FieldLastSavedBy = 20,
    /// <summary>CREATEDATE: when the document was created.</summary>
    FieldCreateDate = 21,
    /// <summary>SAVEDATE: when the document was saved last.</summary>
    FieldSaveDate = 22,
    /// <summary>PRINTDATE: when the document was printed last.</summary>
    FieldPrintDate = 23,
    /// <summary>REVNUM: how many times the document was saved.</summary>
    FieldRevisionNum = 24,
    /// <summary>EDITTIME: the minutes spent editing the document.</summary>
    FieldEditTime = 25,
    /// <summary>NUMPAGES: how many pages the document has.</summary>
    FieldNumPages = 26,
    /// <summary>NUMWORDS: how many words the document has.</summary>
    FieldNumWords = 27,
    /// <summary>NUMCHARS: how many characters the document has.</summary>
    FieldNumChars = 28,
    /// <summary>FILENAME: the document's file name.</summary>
    FieldFileName = 29,
    /// <summary>TEMPLATE: the name of the document's template.</summary>
    FieldTemplate = 30,
    /// <summary>DATE: today's date.</summary>
    FieldDate = 31,
    /// <summary>TIME: the time now.</summary>
    FieldTime = 32,
    /// <summary>PAGE: the number of the page the field is on.</summary>
    FieldPage = 33,
    /// <summary>= : the result of a calculation.</summary>
    FieldFormula = 34,
    /// <summary>QUOTE: a given text.</summary>
    FieldQuote = 35,
    /// <summary>INCLUDE: the text of another document, as older files write INCLUDETEXT.</summary>
    FieldInclude = 36,
    /// <summary>PAGEREF: the number of the page a bookmark is on.</summary>
    FieldPageRef = 37,
    /// <summary>ASK: asks the user for a bookmark's value.</summary>
    FieldAsk = 38,
    /// <summary>FILLIN: asks the user for the text to show.</summary>
    FieldFillIn = 39,
    /// <summary>DATA: the data source of an old mail merge.</summary>
    FieldData = 40,
    /// <summary>NEXT: moves a mail merge to the next record without a new letter.</summary>
    FieldNext = 41,
    /// <summary>NEXTIF: moves a mail merge to the next record when a comparison holds.</summary>
    FieldNextIf = 42,
    /// <summary>SKIPIF: skips the current record of a mail merge when a comparison holds.</summary>
    FieldSkipIf = 43,
    /// <summary>MERGEREC: the number of the mail merge's current record.</summary>
    FieldMergeRec = 44,
    /// <summary>DDE: data from another program, linked by dynamic data exchange.</summary>
    FieldDDE = 45,
    /// <summary>DDEAUTO: data from another program, updated by itself.</summary>
    FieldDDEAuto = 46,
    /// <summary>GLOSSARY: an AutoText entry, as older files write it.</summary>
    FieldGlossary = 47,
    /// <summary>PRINT: printer commands sent when the document is printed.</summary>
    FieldPrint = 48,
    /// <summary>EQ: a mathematical equation.</summary>
    FieldEquation = 49,
    /// <summary>GOTOBUTTON: text that, double-clicked, moves to a place in the document.</summary>
    FieldGoToButton = 50,
    /// <summary>MACROBUTTON: text that, double-clicked, runs a macro.</summary>
    FieldMacroButton = 51,
    /// <summary>AUTONUMOUT: a number in outline style.</summary>
    FieldAutoNumOutline = 52,
    /// <summary>AUTONUMLGL: a number in legal style, as 1.1.1.</summary>
    FieldAutoNumLegal = 53,
    /// <summary>AUTONUM: an automatic paragraph number.</summary>
    FieldAutoNum = 54,
    /// <summary>IMPORT: a picture from a file, as older files write it.</summary>
    FieldImport = 55,
    /// <summary>LINK: part of another file, linked.</summary>
    FieldLink = 56,
    /// <summary>SYMBOL: one character, given by its code.</summary>
    FieldSymbol = 57,
    /// <summary>EMBED: an embedded object.</summary>
    FieldEmbed = 58,
    /// <summary>MERGEFIELD: a value of the mail merge's current record.</summary>
    FieldMergeField = 59,
    /// <summary>USERNAME: the user's name.</summary>
    FieldUserName = 60,
    /// <summary>USERINITIALS: the user's initials.</summary>
    FieldUserInitials = 61,
    /// <summary>USERADDRESS: the user's postal address.</summary>
    FieldUserAddress = 62,
    /// <summary>BARCODE: a postal bar code.</summary>
    FieldBarcode = 63,
    /// <summary>DOCVARIABLE: the value of a document variable.</summary>
    FieldDocVariable = 64,
    /// <summary>SECTION: the number of the section the field is in.</summary>
    FieldSection = 65,
    /// <summary>SECTIONPAGES: how many pages the field's section has.</summary>
    FieldSectionPages = 66,
    /// <summary>INCLUDEPICTURE: a picture from a file.</summary>
    FieldIncludePicture = 67,
    /// <summary>INCLUDETEXT: the text of another document.</summary>
    FieldIncludeText = 68,
    /// <summary>FILESIZE: the size of the document's file.</summary>
    FieldFileSize = 69,
    /// <summary>FORMTEXT: a text box of a form.</summary>
    FieldFormTextInput = 70,
    /// <summary>FORMCHECKBOX: a check box of a form.</summary>
    FieldFormCheckBox = 71,
    /// <summary>NOTEREF: the mark of a footnote or endnote.</summary>
    FieldNoteRef = 72,
    /// <summary>TOA: a table of authorities.</summary>
    FieldTOA = 73,
    /// <summary>TA: an entry for a table of authorities.</summary>
    FieldTOAEntry = 74,
    /// <summary>MERGESEQ: how many records a mail merge has merged.</summary>
    FieldMergeSeq = 75,
    /// <summary>PRIVATE: data kept from a conversion, not shown.</summary>
    FieldPrivate = 77,
    /// <summary>DATABASE: the result of a database query, as a table.</summary>
    FieldDatabase = 78,
    /// <summary>AUTOTEXT: an AutoText entry.</summary>
    FieldAutoText = 79,
    /// <summary>COMPARE: 1 or 0, the result of a comparison.</summary>
    FieldCompare = 80,
    /// <summary>ADDIN: data of an add-in, not shown.</summary>
    FieldAddin = 81,
    /// <summary>FORMDROPDOWN: a drop-down list of a form.</summary>
    FieldFormDropDown = 83,
    /// <summary>ADVANCE: moves the text after it up, down, left or right.</summary>
    FieldAdvance = 84,
    /// <summary>DOCPROPERTY: the value of a document property, built-in or custom.</summary>
    FieldDocProperty = 85,
    /// <summary>An ActiveX control.</summary>
    FieldOcx = 87,
    /// <summary>HYPERLINK: a link to a web address, file or bookmark.</summary>
    FieldHyperlink = 88,
    /// <summary>AUTOTEXTLIST: a shortcut menu of AutoText entries.</summary>
    FieldAutoTextList = 89,
    /// <summary>LISTNUM: a list number within a paragraph.</summary>
    FieldListNum = 90,
    /// <summary>BIDIOUTLINE: an outline number for right-to-left text.</summary>
    FieldBidiOutline = 92,
    /// <summary>ADDRESSBLOCK: a postal address made of a mail merge record's fields.</summary>
    FieldAddressBlock = 93,
    /// <summary>GREETINGLINE: a greeting made of a mail merge record's fields.</summary>
    FieldGreetingLine = 94,
    /// <summary>SHAPE: a drawing canvas, as some files mark it.</summary>
    FieldShape = 95,
    /// <summary>CITATION: a citation of a bibliography source.</summary>
    FieldCitation = 96,
    /// <summary>BIBLIOGRAPHY: the list of the document's sources.</summary>
    FieldBibliography = 97,
    /// <summary>MERGEBARCODE: a bar code made from a mail merge record's field.</summary>
    FieldMergeBarcode = 98,
    /// <summary>DISPLAYBARCODE: a bar code of a given value.</summary>
    FieldDisplayBarcode = 99,
    /// <summary>A field whose first word names no known kind.</summary>
    FieldUnknown = 1000,
}
