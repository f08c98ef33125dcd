using System.Globalization;
using System.Text;
using Quorix.Folio.Fields;

namespace Quorix.Folio.Tests;

public class FormFieldTests
{
    // Three form fields as a word processor writes them, with form data this engine does not
    // interpret (a label, a tab index, help by building block) that must survive a round trip.
    private const string Body = """
        <w:p>
          <w:bookmarkStart w:id="0" w:name="Client"/>
          <w:r><w:fldChar w:fldCharType="begin"><w:ffData><w:name w:val="Client"/><w:label w:val="3"/><w:enabled/><w:calcOnExit w:val="0"/>
            <w:helpText w:type="autoText" w:val="ClientHelp"/><w:statusText w:type="text" w:val="Who pays"/>
            <w:textInput><w:default w:val="Acme"/><w:maxLength w:val="12"/><w:format w:val="UPPERCASE"/></w:textInput></w:ffData></w:fldChar></w:r>
          <w:r><w:instrText xml:space="preserve"> FORMTEXT </w:instrText></w:r>
          <w:r><w:fldChar w:fldCharType="separate"/></w:r><w:r><w:t>ACME</w:t></w:r>
          <w:r><w:fldChar w:fldCharType="end"/></w:r>
          <w:bookmarkEnd w:id="0"/>
          <w:r><w:t xml:space="preserve"> paid: </w:t></w:r>
          <w:r><w:fldChar w:fldCharType="begin"><w:ffData><w:name w:val="Paid"/><w:tabIndex w:val="2"/><w:enabled/><w:calcOnExit w:val="0"/>
            <w:checkBox><w:sizeAuto/><w:default w:val="0"/><w:checked/></w:checkBox></w:ffData></w:fldChar></w:r>
          <w:r><w:instrText xml:space="preserve"> FORMCHECKBOX </w:instrText></w:r>
          <w:r><w:fldChar w:fldCharType="end"/></w:r>
          <w:r><w:t xml:space="preserve"> via </w:t></w:r>
          <w:r><w:fldChar w:fldCharType="begin"><w:ffData><w:name w:val="Via"/><w:enabled/><w:calcOnExit w:val="0"/>
            <w:ddList><w:result w:val="1"/><w:listEntry w:val="Post"/><w:listEntry w:val="Mail"/><w:listEntry w:val="Phone"/></w:ddList></w:ffData></w:fldChar></w:r>
          <w:r><w:instrText xml:space="preserve"> FORMDROPDOWN </w:instrText></w:r>
          <w:r><w:fldChar w:fldCharType="separate"/></w:r><w:r><w:t>Mail</w:t></w:r>
          <w:r><w:fldChar w:fldCharType="end"/></w:r>
        </w:p>
        """;

    private static Document Form()
    {
        var blank = TestSupport.ToBytes(new Document());
        var docx = TestSupport.WithPart(blank, "word/document.xml", xml =>
        {
            int at = xml!.IndexOf("<w:body>", StringComparison.Ordinal) + "<w:body>".Length;
            return xml[..at] + Body + xml[at..];
        });
        return new Document(new MemoryStream(docx));
    }

    [Fact]
    public void FormDataIsReadFromTheFieldsStartMarkers()
    {
        var forms = Form().Range.FormFields;
        Assert.Equal(3, forms.Count);
        Assert.Equal(new[] { "Client", "Paid", "Via" }, forms.Select(f => f.Name));

        var text = forms["client"]!;
        Assert.Equal(FieldType.FieldFormTextInput, text.Type);
        Assert.IsType<FieldFormText>(text.Field);
        Assert.Equal(("ACME", "Acme", 12, "UPPERCASE", TextFormFieldType.Regular), (text.Result, text.TextInputDefault, text.MaxLength, text.TextInputFormat, text.TextInputType));
        Assert.True(text.Enabled);
        Assert.False(text.CalculateOnExit);
        Assert.Equal(("ClientHelp", false, "Who pays", true), (text.HelpText, text.OwnHelp, text.StatusText, text.OwnStatus));

        var box = forms["Paid"]!;
        Assert.Equal(FieldType.FieldFormCheckBox, box.Type);
        Assert.True(box.Checked);
        Assert.False(box.Default);
        Assert.False(box.IsCheckBoxExactSize);
        Assert.Equal("1", box.Result);

        var list = forms[2];
        Assert.Equal(FieldType.FieldFormDropDown, list.Type);
        Assert.Equal(new[] { "Post", "Mail", "Phone" }, list.DropDownItems);
        Assert.Equal((1, "Mail"), (list.DropDownSelectedIndex, list.Result));
        Assert.Null(forms["nothing"]);
    }

    [Fact]
    public void EditsAreWrittenBackAndUninterpretedDataSurvives()
    {
        var doc = Form();
        var forms = doc.Range.FormFields;
        forms["Client"]!.SetTextInputValue("globex corporation");
        forms["Client"]!.MaxLength = 20;
        forms["Paid"]!.Checked = false;
        forms["Paid"]!.CheckBoxSize = 12;
        var list = forms["Via"]!;
        list.DropDownItems.Insert(0, "Fax");
        list.DropDownSelectedIndex = 3;

        var bytes = TestSupport.ToBytes(doc);
        var xml = TestSupport.Part(bytes, "word/document.xml");
        // Children stay in the schema's order, so strict readers take the file.
        Assert.Matches("<w:name w:val=\"Client\" />\\s*<w:label w:val=\"3\" />\\s*<w:enabled />", xml);
        Assert.Matches("<w:default w:val=\"Acme\" />\\s*<w:maxLength w:val=\"20\" />\\s*<w:format w:val=\"UPPERCASE\" />", xml);
        Assert.Matches("<w:checkBox>\\s*<w:size w:val=\"24\" />\\s*<w:default w:val=\"0\" />\\s*<w:checked w:val=\"0\" />", xml);
        Assert.Contains("<w:tabIndex w:val=\"2\" />", xml);
        Assert.Contains("<w:helpText w:type=\"autoText\" w:val=\"ClientHelp\" />", xml);

        var again = new Document(new MemoryStream(bytes)).Range.FormFields;
        // The text was cut at the maximum length in force when it was set, and upper-cased.
        Assert.Equal("GLOBEX CORPO", again["Client"]!.Result);
        Assert.False(again["Paid"]!.Checked);
        Assert.Equal((true, 12.0), (again["Paid"]!.IsCheckBoxExactSize, again["Paid"]!.CheckBoxSize));
        Assert.Equal(new[] { "Fax", "Post", "Mail", "Phone" }, again["Via"]!.DropDownItems);
        Assert.Equal("Phone", again["Via"]!.Result);
    }

    [Fact]
    public void TextAndPagesShowTheBoxTheChoiceAndTheText()
    {
        var doc = Form();
        Assert.Equal("ACME paid: \u2612 via Mail", doc.ToText().Trim());
        doc.Range.FormFields["Paid"]!.Checked = false;
        doc.Range.FormFields["Via"]!.DropDownSelectedIndex = 2;
        Assert.Equal("ACME paid: \u2610 via Phone", doc.ToText().Trim());
        // The drop-down's stored result follows the choice, for readers that show results.
        Assert.Equal("Phone", doc.Range.Fields[2].Result);

        var path = Path.Combine(TestSupport.TempDir(), "form.pdf");
        doc.Save(path);
        var text = TestSupport.Run("pdftotext", path + " -").Out;
        Assert.Contains("ACME paid: \u2610 via Phone", text);
    }

    [Fact]
    public void BuilderInsertsFormFieldsInsideBookmarksOfTheirNames()
    {
        var doc = new Document();
        doc.FieldOptions.FieldUpdateCulture = CultureInfo.InvariantCulture;
        var b = new DocumentBuilder(doc);
        var amount = b.InsertTextInput("Amount", TextFormFieldType.Number, "#,##0.00", "", 0);
        b.Write(" ");
        var when = b.InsertTextInput("When", TextFormFieldType.Date, "d MMMM yyyy", "", 0);
        b.Write(" ");
        b.InsertCheckBox("Agree", false, true, 0);
        b.Write(" ");
        b.InsertComboBox("Size", new[] { "S", "M", "L" }, 2);

        // An empty text box shows the blank the word processor shows.
        Assert.Equal(new string('\u2002', 5), amount.Result);
        amount.SetTextInputValue(1234.5);
        when.SetTextInputValue(new DateTime(2024, 3, 5));
        Assert.Equal(("1,234.50", "5 March 2024"), (amount.Result, when.Result));
        Assert.Throws<ArgumentException>(() => amount.SetTextInputValue("many"));

        var again = TestSupport.RoundTrip(doc);
        Assert.Equal(new[] { "Amount", "When", "Agree", "Size" }, again.Range.Bookmarks.Select(x => x.Name));
        var forms = again.Range.FormFields;
        Assert.Equal(new[] { FieldType.FieldFormTextInput, FieldType.FieldFormTextInput, FieldType.FieldFormCheckBox, FieldType.FieldFormDropDown },
            forms.Select(f => f.Type));
        Assert.Equal((TextFormFieldType.Number, "#,##0.00"), (forms[0].TextInputType, forms[0].TextInputFormat));
        Assert.True(forms["Agree"]!.Checked);
        Assert.False(forms["Agree"]!.Default);
        Assert.Equal("L", forms["Size"]!.Result);
        Assert.Equal("1,234.50 5 March 2024 \u2612 L", again.ToText().Trim());

        // A new name renames the bookmark that wraps the field.
        forms["Size"]!.Name = "Shirt";
        Assert.NotNull(again.Range.Bookmarks["Shirt"]);
        Assert.Null(again.Range.Bookmarks["Size"]);
    }

    [Fact]
    public void WrongKindsAndLimitsAreRefused()
    {
        var b = new DocumentBuilder();
        var text = b.InsertTextInput("T", TextFormFieldType.Regular, "", "", 0);
        var box = b.InsertCheckBox("C", true, 0);
        var list = b.InsertComboBox("D", new[] { "a" }, 0);

        Assert.Equal("The form field is a text box, not a check box.",
            Assert.Throws<InvalidOperationException>(() => text.Checked = true).Message);
        Assert.Throws<InvalidOperationException>(() => box.DropDownItems.Count);
        Assert.Throws<InvalidOperationException>(() => list.SetTextInputValue("a"));
        Assert.Throws<ArgumentException>(() => text.Name = new string('n', 21));
        Assert.Throws<ArgumentOutOfRangeException>(() => list.DropDownSelectedIndex = 1);
        Assert.Throws<ArgumentException>(() => list.Result = "zzz");
        for (int i = 1; i < 25; i++) list.DropDownItems.Add("item" + i);
        Assert.Throws<InvalidOperationException>(() => list.DropDownItems.Add("one too many"));
        Assert.Throws<ArgumentOutOfRangeException>(() => b.InsertComboBox("E", new[] { "a" }, 3));
        Assert.Throws<ArgumentOutOfRangeException>(() => box.CheckBoxSize = 0);
        // A plain text box still says what it is, as word processors tell the kind by that element.
        Assert.Contains("<w:ffData><w:name w:val=\"T\" /><w:enabled w:val=\"1\" /><w:textInput /></w:ffData>",
            TestSupport.Part(TestSupport.ToBytes(b.Document), "word/document.xml"));

        // Removing the chosen item falls back to the first.
        list.DropDownSelectedIndex = 24;
        list.DropDownItems.RemoveAt(24);
        Assert.Equal(("a", 0), (list.Result, list.DropDownSelectedIndex));
        list.DropDownItems.Clear();
        Assert.Equal("", list.Result);
    }

    [Fact]
    public void RemovingFormFieldsTakesTheirCodeAndResult()
    {
        var doc = Form();
        doc.Range.FormFields.Remove("Client");
        Assert.Equal(2, doc.Range.FormFields.Count);
        Assert.StartsWith("paid:", doc.ToText().Trim());
        doc.Range.FormFields.Clear();
        Assert.Empty(doc.Range.Fields);
        Assert.Equal("paid:  via", doc.ToText().Trim());
    }
}

internal static class TextOutput
{
    public static string ToText(this Document doc) => TestSupport.ToText(doc, SaveFormat.Text);
}
