using Quorix.Folio.Formatting;
using Quorix.Folio.Lists;

namespace Quorix.Folio.Notes;

/// <summary>Where footnotes are printed.</summary>
public enum FootnotePosition
{
    /// <summary>At the bottom of the page, whatever the length of its text.</summary>
    BottomOfPage = 0,
    /// <summary>Right below the page's last line of text.</summary>
    BeneathText = 1,
}

/// <summary>Where endnotes are gathered.</summary>
public enum EndnotePosition
{
    /// <summary>At the end of each section.</summary>
    EndOfSection = 0,
    /// <summary>At the end of the document.</summary>
    EndOfDocument = 3,
}

/// <summary>When footnote numbers start again.</summary>
public enum FootnoteNumberingRule
{
    /// <summary>Never: one numbering through the document.</summary>
    Continuous = 0,
    /// <summary>At each section.</summary>
    RestartSection = 1,
    /// <summary>On each page.</summary>
    RestartPage = 2,
}

/// <summary>The numbering and place of footnotes, kept in the section properties of the sections it
/// covers: read from the first, written to all.</summary>
public sealed class FootnoteOptions
{
    private readonly NoteProps props;

    internal FootnoteOptions(Func<IEnumerable<PropBag>> sections, FootnoteType type) { props = new NoteProps(sections, type); }

    /// <summary>How footnote numbers are written: 1, i, a, symbols and the like.</summary>
    public NumberStyle NumberStyle { get => props.NumberStyle; set => props.NumberStyle = value; }

    /// <summary>The number of the first footnote.</summary>
    public int StartNumber { get => props.StartNumber; set => props.StartNumber = value; }

    /// <summary>When footnote numbers start again: never, at each section or on each page.</summary>
    public FootnoteNumberingRule RestartRule { get => props.RestartRule; set => props.RestartRule = value; }

    /// <summary>Where footnotes are printed: at the page's bottom or below its text.</summary>
    public FootnotePosition Position
    {
        get => props.Position == "beneathText" ? FootnotePosition.BeneathText : FootnotePosition.BottomOfPage;
        set => props.Position = value switch
        {
            FootnotePosition.BottomOfPage => null,
            FootnotePosition.BeneathText => "beneathText",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        };
    }
}

/// <summary>The numbering and place of endnotes, kept as <see cref="FootnoteOptions"/> are.</summary>
public sealed class EndnoteOptions
{
    private readonly NoteProps props;

    internal EndnoteOptions(Func<IEnumerable<PropBag>> sections, FootnoteType type) { props = new NoteProps(sections, type); }

    /// <summary>How endnote numbers are written: i, 1, a and the like.</summary>
    public NumberStyle NumberStyle { get => props.NumberStyle; set => props.NumberStyle = value; }

    /// <summary>The number of the first endnote.</summary>
    public int StartNumber { get => props.StartNumber; set => props.StartNumber = value; }

    /// <summary>Endnotes are numbered on through the document or again in each section; never per page.</summary>
    public FootnoteNumberingRule RestartRule
    {
        get => props.RestartRule;
        set
        {
            if (value == FootnoteNumberingRule.RestartPage)
                throw new ArgumentException("Endnotes cannot restart their numbering on each page; they are not placed on the pages of their references.", nameof(value));
            props.RestartRule = value;
        }
    }

    /// <summary>Where endnotes are gathered: at each section's end or the document's.</summary>
    public EndnotePosition Position
    {
        get => props.Position == "sectEnd" ? EndnotePosition.EndOfSection : EndnotePosition.EndOfDocument;
        set => props.Position = value switch
        {
            EndnotePosition.EndOfDocument => null,
            EndnotePosition.EndOfSection => "sectEnd",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        };
    }
}

/// <summary>The footnotePr or endnotePr element of section properties, as both option kinds read it.</summary>
internal sealed class NoteProps
{
    private readonly Func<IEnumerable<PropBag>> sections;
    private readonly string element;
    private readonly FootnoteType type;

    public NoteProps(Func<IEnumerable<PropBag>> sections, FootnoteType type)
    {
        this.sections = sections;
        this.type = type;
        element = type == FootnoteType.Footnote ? "footnotePr" : "endnotePr";
    }

    private string? Get(string child) => sections().FirstOrDefault()?.Find(element)?.Child(child)?.Get("val");

    private void Set(string child, string? value)
    {
        foreach (var bag in sections())
        {
            var pr = bag.GetOrAdd(element);
            var existing = pr.Child(child);
            if (existing != null) existing.Set("val", value);
            if (value == null) { if (existing != null) pr.Children!.Remove(existing); continue; }
            if (existing != null) continue;
            // The schema fixes the children's order.
            var children = pr.Children ??= new List<PropElement>();
            int rank = Array.IndexOf(Order, child), at = children.FindIndex(c => Array.IndexOf(Order, c.Local) > rank);
            children.Insert(at < 0 ? children.Count : at, new PropElement(child).Set("val", value));
        }
    }

    private static readonly string[] Order = { "pos", "numFmt", "numStart", "numRestart" };

    // Endnotes are numbered i, ii, iii unless told otherwise.
    public NumberStyle NumberStyle
    {
        get => Get("numFmt") is { } f ? ListNumbering.StyleFromXml(f) : type == FootnoteType.Footnote ? NumberStyle.Arabic : NumberStyle.LowercaseRoman;
        set
        {
            if (value is NumberStyle.Bullet or NumberStyle.None || !Enum.IsDefined(value))
                throw new ArgumentOutOfRangeException(nameof(value), $"Notes cannot be numbered in the style {value}.");
            Set("numFmt", ListNumbering.StyleToXml(value));
        }
    }

    public int StartNumber
    {
        get => Units.ParseInt(Get("numStart")) is { } n and > 0 ? n : 1;
        set
        {
            if (value < 1) throw new ArgumentOutOfRangeException(nameof(value), "Note numbering starts at 1 or above.");
            Set("numStart", value == 1 ? null : Units.Str(value));
        }
    }

    public FootnoteNumberingRule RestartRule
    {
        get => Get("numRestart") switch
        {
            "eachSect" => FootnoteNumberingRule.RestartSection,
            "eachPage" => FootnoteNumberingRule.RestartPage,
            _ => FootnoteNumberingRule.Continuous,
        };
        set => Set("numRestart", value switch
        {
            FootnoteNumberingRule.Continuous => null,
            FootnoteNumberingRule.RestartSection => "eachSect",
            FootnoteNumberingRule.RestartPage => "eachPage",
            _ => throw new ArgumentOutOfRangeException(nameof(value)),
        });
    }

    public string? Position { get => Get("pos"); set => Set("pos", value); }
}
