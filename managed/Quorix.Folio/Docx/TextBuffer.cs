using System.Text;

namespace Quorix.Folio.Docx;

/// <summary>Collects a run's text. Most runs hold one text element, whose string is then
/// taken as it is; only runs with several pieces pay for concatenation.</summary>
internal sealed class TextBuffer
{
    private string? single;
    private readonly StringBuilder many = new(256);
    private bool usingMany;

    public int Length => usingMany ? many.Length : single?.Length ?? 0;

    public void Append(string s)
    {
        if (s.Length == 0) return;
        if (!usingMany && single == null) { single = s; return; }
        Spill();
        many.Append(s);
    }

    public void Append(char c)
    {
        Spill();
        many.Append(c);
    }

    private void Spill()
    {
        if (usingMany) return;
        usingMany = true;
        many.Clear();
        if (single != null) many.Append(single);
        single = null;
    }

    /// <summary>The text so far; the buffer is empty afterwards.</summary>
    public string Take()
    {
        string s = usingMany ? many.ToString() : single ?? "";
        single = null;
        usingMany = false;
        many.Clear();
        return s;
    }
}
