using System.Text;
using System.Text.RegularExpressions;
using Markdig;
using Markdig.Extensions.Footnotes;
using Markdig.Extensions.Tables;
using Markdig.Extensions.TaskLists;
using Markdig.Syntax;
using Markdig.Syntax.Inlines;
using Quorix.Folio.Formats.Flow;
using List = Quorix.Folio.Lists.List;
using Quorix.Folio.Lists;
using Quorix.Folio.Loading;
using MdTable = Markdig.Extensions.Tables.Table;
using MdTableCell = Markdig.Extensions.Tables.TableCell;
using MdTableRow = Markdig.Extensions.Tables.TableRow;

namespace Quorix.Folio.Formats.Markdown;

/// <summary>CommonMark with GitHub's tables, task lists, strikethrough and footnotes. Markdig parses;
/// this class maps its syntax tree onto headings, emphasis, code, lists, tables, links and pictures.</summary>
internal sealed class MarkdownReader : IDocumentReader
{
    public LoadFormat Format => LoadFormat.Markdown;

    public void Read(Stream input, Document document, LoadOptions options)
    {
        var text = TextDecoding.ReadAll(input, options, Format);
        var md = options as MarkdownLoadOptions ?? new MarkdownLoadOptions();
        new Walker(new FlowBuilder(document), new ResourceResolver(options, document, WarningSource.Markdown), md).Document(text);
    }

    internal static MarkdownPipeline Pipeline(bool underline)
    {
        var b = new MarkdownPipelineBuilder().UsePipeTables().UseGridTables().UseFootnotes().UseTaskLists().UseAutoLinks().UseYamlFrontMatter().UsePreciseSourceLocation();
        var extras = Markdig.Extensions.EmphasisExtras.EmphasisExtraOptions.Strikethrough
                     | Markdig.Extensions.EmphasisExtras.EmphasisExtraOptions.Subscript
                     | Markdig.Extensions.EmphasisExtras.EmphasisExtraOptions.Superscript;
        if (underline) extras |= Markdig.Extensions.EmphasisExtras.EmphasisExtraOptions.Inserted;
        return b.UseEmphasisExtras(extras).Build();
    }

    private sealed class Walker
    {
        private readonly FlowBuilder b;
        private readonly ResourceResolver resources;
        private readonly MarkdownLoadOptions options;
        private readonly Stack<(List List, int Level)> lists = new();
        private int quoteDepth;

        public Walker(FlowBuilder b, ResourceResolver resources, MarkdownLoadOptions options)
        {
            this.b = b;
            this.resources = resources;
            this.options = options;
        }

        public void Document(string text)
        {
            var ast = Markdig.Markdown.Parse(text, Pipeline(options.ImportUnderlineFormatting));
            Blocks(ast, text);
            b.Finish();
        }

        private void Blocks(ContainerBlock container, string source)
        {
            int? lastLine = null;
            foreach (var block in container)
            {
                if (options.PreserveEmptyLines && lastLine is { } ll && container is MarkdownDocument)
                    for (int i = ll + 1; i < block.Line; i++)
                    {
                        b.StartParagraph(ParaFormat.Normal);
                        b.EndParagraph();
                    }
                Block(block, source);
                lastLine = LastLine(block, source);
            }
        }

        private static int LastLine(Block block, string source)
        {
            int end = Math.Min(block.Span.End, source.Length - 1);
            int line = block.Line;
            for (int i = block.Span.Start; i <= end && i >= 0; i++)
                if (source[i] == '\n' && i < end) line++;
            return line;
        }

        private ParaFormat Para(BlockKind kind = BlockKind.Normal, int level = 0)
        {
            var f = new ParaFormat { Kind = quoteDepth > 0 && kind == BlockKind.Normal ? BlockKind.Quote : kind, HeadingLevel = level };
            if (lists.Count > 0) f = f with { List = lists.Peek().List, ListLevel = lists.Peek().Level };
            return f;
        }

        private void Block(Block block, string source)
        {
            switch (block)
            {
                case Markdig.Extensions.Yaml.YamlFrontMatterBlock:
                    // Front matter is metadata, not text.
                    break;
                case HeadingBlock h:
                    b.StartParagraph(Para(BlockKind.Heading, h.Level));
                    Inlines(h.Inline, CharFormat.Plain);
                    b.EndParagraph();
                    break;
                case ParagraphBlock p:
                    b.StartParagraph(Para());
                    Inlines(p.Inline, CharFormat.Plain);
                    b.EndParagraph();
                    break;
                case QuoteBlock q:
                    quoteDepth++;
                    Blocks(q, source);
                    quoteDepth--;
                    break;
                case ListBlock l:
                    List(l, source);
                    break;
                case CodeBlock c:
                    Code(c);
                    break;
                case ThematicBreakBlock:
                    var rule = b.StartParagraph(Para());
                    rule.ParagraphFormat.GetBorder(BorderType.Bottom).LineStyle = LineStyle.Single;
                    b.EndParagraph();
                    break;
                case MdTable t:
                    Table(t, source);
                    break;
                case FootnoteGroup:
                case LinkReferenceDefinitionGroup:
                    // Notes are placed where they are referenced; definitions only serve links.
                    break;
                case HtmlBlock html:
                    // Markup in Markdown shows as the page it describes.
                    b.EndParagraph();
                    Html.HtmlReader.Fragment(html.Lines.ToString(), b, resources);
                    break;
                case ContainerBlock other:
                    Blocks(other, source);
                    break;
                case LeafBlock leaf when leaf.Inline != null:
                    b.StartParagraph(Para());
                    Inlines(leaf.Inline, CharFormat.Plain);
                    b.EndParagraph();
                    break;
            }
        }

        private void List(ListBlock l, string source)
        {
            List list;
            int level;
            if (lists.Count == 0)
            {
                int start = l.IsOrdered && int.TryParse(l.OrderedStart, out var s) ? s : 1;
                list = b.NewList(l.IsOrdered, start);
                level = 0;
            }
            else (list, level) = FlowBuilder.NestedList(lists.Peek().List, lists.Peek().Level, l.IsOrdered);
            lists.Push((list, level));
            foreach (var item in l)
            {
                if (item is not ListItemBlock li) continue;
                bool first = true;
                foreach (var child in li)
                {
                    // Paragraphs after the first of an item continue it without a new label.
                    if (!first && child is ParagraphBlock more)
                    {
                        var p = b.StartParagraph(Para() with { List = null, LeftIndent = 36 * (level + 1) });
                        Inlines(more.Inline, CharFormat.Plain);
                        b.EndParagraph();
                        continue;
                    }
                    Block(child, source);
                    first = false;
                }
                if (li.Count == 0)
                {
                    b.StartParagraph(Para());
                    b.EndParagraph();
                }
            }
            lists.Pop();
        }

        private void Code(CodeBlock c)
        {
            var lines = c.Lines.Lines;
            int count = c.Lines.Count;
            // Trailing blank lines of an indented block are not part of the code.
            while (count > 0 && lines[count - 1].Slice.IsEmptyOrWhitespace()) count--;
            if (count == 0)
            {
                b.StartParagraph(Para(BlockKind.Code));
                b.EndParagraph();
                return;
            }
            for (int i = 0; i < count; i++)
            {
                b.StartParagraph(Para(BlockKind.Code));
                var s = lines[i].Slice.ToString();
                if (s.Length > 0) b.Text(s, CharFormat.Plain);
                b.EndParagraph();
            }
        }

        private void Table(MdTable t, string source)
        {
            var saved = lists.ToArray();
            lists.Clear();
            b.StartTable();
            foreach (var rowBlock in t)
            {
                if (rowBlock is not MdTableRow row) continue;
                b.StartRow();
                int col = 0;
                foreach (var cellBlock in row)
                {
                    if (cellBlock is not MdTableCell cell) continue;
                    var align = col < t.ColumnDefinitions.Count ? t.ColumnDefinitions[col].Alignment : null;
                    b.StartCell();
                    foreach (var inner in cell)
                    {
                        if (inner is ParagraphBlock p)
                        {
                            b.StartParagraph(new ParaFormat { Alignment = Align(align) });
                            Inlines(p.Inline, CharFormat.Plain);
                            b.EndParagraph();
                        }
                        else Block(inner, source);
                    }
                    b.EndCell();
                    for (int k = 1; k < cell.ColumnSpan; k++)
                    {
                        b.StartCell();
                        b.EndCell();
                    }
                    col += Math.Max(1, cell.ColumnSpan);
                }
                if (row.IsHeader && b.InTable) b.CurrentRowHeading();
            }
            b.EndTable();
            foreach (var e in saved.Reverse()) lists.Push(e);
        }

        private static ParagraphAlignment? Align(TableColumnAlign? a) => a switch
        {
            TableColumnAlign.Center => ParagraphAlignment.Center,
            TableColumnAlign.Right => ParagraphAlignment.Right,
            TableColumnAlign.Left => ParagraphAlignment.Left,
            _ => null,
        };

        private void Inlines(ContainerInline? container, CharFormat f)
        {
            if (container == null) return;
            for (var i = container.FirstChild; i != null; i = i.NextSibling) Inline(i, f);
        }

        private void Inline(Markdig.Syntax.Inlines.Inline inline, CharFormat f)
        {
            switch (inline)
            {
                case LiteralInline lit:
                    if (!lit.Content.IsEmpty) b.Text(lit.Content.ToString(), f);
                    break;
                case EmphasisInline e:
                    Inlines(e, Emphasis(e, f));
                    break;
                case CodeInline c:
                    b.Text(c.Content, f with { Code = true });
                    break;
                case LineBreakInline lb:
                    if (lb.IsHard) b.LineBreak(f);
                    else b.Text(" ", f);
                    break;
                case TaskList task:
                    b.Text(task.Checked ? "\u2612 " : "\u2610 ", f);
                    break;
                case FootnoteLink fl when !fl.IsBackLink:
                    Footnote(fl.Footnote);
                    break;
                case FootnoteLink:
                    break;
                case AutolinkInline al:
                    b.StartLink(al.IsEmail ? "mailto:" + al.Url : al.Url);
                    b.Text(al.Url, f);
                    b.EndLink();
                    break;
                case LinkInline link when link.IsImage:
                    Image(link, f);
                    break;
                case LinkInline link:
                    b.StartLink(link.GetDynamicUrl?.Invoke() ?? link.Url ?? "");
                    Inlines(link, f);
                    b.EndLink();
                    break;
                case HtmlEntityInline ent:
                    b.Text(ent.Transcoded.ToString(), f);
                    break;
                case HtmlInline html:
                    // Inline tags are markup, not text; a line break is the one that shows.
                    if (Regex.IsMatch(html.Tag, @"^<br\s*/?>$", RegexOptions.IgnoreCase)) b.LineBreak(f);
                    break;
                case ContainerInline c:
                    Inlines(c, f);
                    break;
            }
        }

        private static CharFormat Emphasis(EmphasisInline e, CharFormat f) => (e.DelimiterChar, e.DelimiterCount) switch
        {
            ('*' or '_', 1) => f with { Italic = true },
            ('*' or '_', 2) => f with { Bold = true },
            ('*' or '_', _) => f with { Bold = true, Italic = true },
            ('~', 2) => f with { Strike = true },
            ('~', 1) => f with { Subscript = true },
            ('^', _) => f with { Superscript = true },
            ('+', 2) => f with { Underline = Underline.Single },
            _ => f,
        };

        private void Image(LinkInline link, CharFormat f)
        {
            var alt = new StringBuilder();
            foreach (var c in link.Descendants<LiteralInline>()) alt.Append(c.Content.ToString());
            var url = link.Url ?? "";
            var bytes = resources.Get(url);
            if (bytes != null && Drawing.ImageInfo.Detect(bytes).Type is not (Drawing.ImageType.NoImage or Drawing.ImageType.Unknown))
            {
                b.Image(bytes, -1, -1, alt.ToString());
                return;
            }
            // A picture we cannot read stays a visible link to where it lives.
            b.StartLink(url);
            b.Text(alt.Length > 0 ? alt.ToString() : url, f);
            b.EndLink();
        }

        private void Footnote(Markdig.Extensions.Footnotes.Footnote note)
        {
            b.StartFootnote();
            var savedLists = lists.ToArray();
            lists.Clear();
            foreach (var child in note) Block(child, "");
            foreach (var e in savedLists.Reverse()) lists.Push(e);
            b.LeaveContainer();
        }
    }
}
