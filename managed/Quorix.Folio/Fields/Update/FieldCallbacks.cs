namespace Quorix.Folio.Fields;

/// <summary>Told before and after each field is updated; set on <see cref="FieldOptions.FieldUpdatingCallback"/>.
/// An exception thrown here stops the update: fields updated before keep their new results, the rest their old ones.</summary>
public interface IFieldUpdatingCallback
{
    /// <summary>Before the field's result is computed.</summary>
    void FieldUpdating(Field field);

    /// <summary>After the field's result was computed and written.</summary>
    void FieldUpdated(Field field);
}

/// <summary>How far an update of fields has come.</summary>
public sealed class FieldUpdatingProgressArgs
{
    internal FieldUpdatingProgressArgs(int total, int updated)
    {
        TotalFieldsCount = total;
        UpdatedFieldsCount = updated;
    }

    /// <summary>How many fields the update goes through.</summary>
    public int TotalFieldsCount { get; }

    /// <summary>How many of them it has gone through so far.</summary>
    public int UpdatedFieldsCount { get; }

    /// <summary>Whether the update has gone through every field.</summary>
    public bool UpdateCompleted => UpdatedFieldsCount == TotalFieldsCount;
}

/// <summary>Told how an update of fields progresses; set on <see cref="FieldOptions.FieldUpdatingProgressCallback"/>.
/// Called each time another whole percent of the fields is done, and once at the end.</summary>
public interface IFieldUpdatingProgressCallback
{
    /// <summary>Reports the progress so far.</summary>
    void Notify(FieldUpdatingProgressArgs args);
}

/// <summary>Formats field results in a way of the application's own. Field results are formatted by
/// the engine's rules for now, so nothing asks it yet.</summary>
public interface IFieldResultFormatter
{
    /// <summary>A number formatted with a numeric picture (\# switch); null for the engine's own result.</summary>
    string? FormatNumeric(double value, string format);

    /// <summary>A date formatted with a date picture (\@ switch); null for the engine's own result.</summary>
    string? FormatDateTime(DateTime value, string format);

    /// <summary>A value formatted with a general format (\* switch); null for the engine's own result.</summary>
    string? Format(string value, GeneralFormat format);
}

/// <summary>Names the culture a field is formatted with, by the culture name the field asks for.
/// Field update takes cultures from <see cref="FieldOptions.FieldUpdateCultureSource"/> for now, so nothing asks it yet.</summary>
public interface IFieldUpdateCultureProvider
{
    /// <summary>The name of the culture to use (such as "de-DE") for the one the field asks for; null for that one.</summary>
    string? GetCulture(string culture, Field field);
}

/// <summary>Supplies the bibliography style files that CITATION and BIBLIOGRAPHY fields are formatted with.
/// Those fields keep their results for now, so nothing asks it yet.</summary>
public interface IBibliographyStylesProvider
{
    /// <summary>The style file's content, or null when it is not available.</summary>
    Stream? GetStyle(string styleFileName);
}

/// <summary>The comparison of an IF or COMPARE field: two expressions and an operator.</summary>
public sealed class ComparisonExpression
{
    /// <summary>Describes a comparison.</summary>
    public ComparisonExpression(string leftExpression, string comparisonOperator, string rightExpression)
    {
        LeftExpression = leftExpression;
        ComparisonOperator = comparisonOperator;
        RightExpression = rightExpression;
    }

    /// <summary>The left-hand side as the field writes it.</summary>
    public string LeftExpression { get; }

    /// <summary>One of "=", "&lt;&gt;", "&lt;", "&lt;=", "&gt;", "&gt;=".</summary>
    public string ComparisonOperator { get; }

    /// <summary>The right-hand side as the field writes it.</summary>
    public string RightExpression { get; }
}

/// <summary>The outcome of a comparison: true, false, or an error the field shows.</summary>
public sealed class ComparisonEvaluationResult
{
    /// <summary>A comparison that holds or does not.</summary>
    public ComparisonEvaluationResult(bool result) { Result = result; }

    /// <summary>A comparison that could not be made; the field shows the message.</summary>
    public ComparisonEvaluationResult(string errorMessage) { ErrorMessage = errorMessage; }

    /// <summary>Whether the comparison holds.</summary>
    public bool Result { get; }

    /// <summary>The error, or null when the comparison could be made.</summary>
    public string? ErrorMessage { get; }
}

/// <summary>Decides the comparisons of IF and COMPARE fields in a way of the application's own.
/// Those fields compare by the engine's rules for now, so nothing asks it yet.</summary>
public interface IComparisonExpressionEvaluator
{
    /// <summary>The outcome, or null for the engine's own.</summary>
    ComparisonEvaluationResult? Evaluate(Field field, ComparisonExpression expression);
}

/// <summary>One row of a DATABASE field's result.</summary>
public sealed class FieldDatabaseDataRow
{
    private readonly List<string> values = new();

    /// <summary>An empty row.</summary>
    public FieldDatabaseDataRow() { }

    /// <summary>Adds the next cell's text.</summary>
    public void Add(string value) => values.Add(value ?? "");

    /// <summary>How many cells the row has.</summary>
    public int Count => values.Count;

    /// <summary>A cell's text by its position.</summary>
    public string GetValue(int index) => values[index];
}

/// <summary>The table a DATABASE field shows: column names and rows.</summary>
public sealed class FieldDatabaseDataTable
{
    private readonly List<string> columns = new();
    private readonly List<FieldDatabaseDataRow> rows = new();

    /// <summary>An empty table.</summary>
    public FieldDatabaseDataTable() { }

    /// <summary>Adds a column by name.</summary>
    public void AddColumn(string name) => columns.Add(name ?? "");

    /// <summary>Adds a row.</summary>
    public void AddRow(FieldDatabaseDataRow row) => rows.Add(row ?? throw new ArgumentNullException(nameof(row)));

    /// <summary>How many columns the table has.</summary>
    public int ColumnCount => columns.Count;

    /// <summary>A column's name by its position.</summary>
    public string GetColumnName(int index) => columns[index];

    /// <summary>How many rows the table has.</summary>
    public int RowCount => rows.Count;

    /// <summary>A row by its position.</summary>
    public FieldDatabaseDataRow GetRow(int index) => rows[index];
}

/// <summary>Answers the queries of DATABASE fields. Those fields keep their results for now, so nothing asks it yet.</summary>
public interface IFieldDatabaseProvider
{
    /// <summary>The result of the field's query against the named data file, or null to keep the field's result.</summary>
    FieldDatabaseDataTable? GetQueryResult(string fileName, string query, Field field);
}
