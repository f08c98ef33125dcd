using Quorix.WrpGen;
using Xunit;

namespace WrpGen.Tests;

/// <summary>
/// The framework's core library has every metadata shape the fixture lacks (a class without a
/// base, function pointers, modifiers, forwarders, thousands of overloads).
/// </summary>
public class LargeAssemblyTests
{
    private static readonly Lazy<AssemblyModel> Core = new(() =>
        ModelBuilder.Build(typeof(object).Assembly.Location, "System", null, [Fixture.FrameworkFolder]));

    [Fact]
    public void ObjectIsBoundWithoutABase()
    {
        var obj = Core.Value.Types.Single(t => t.FullName == "System.Object");
        Assert.Null(obj.Base);
        Assert.Same(obj, Core.Value.Types.Single(t => t.FullName == "System.Exception").Base);
    }

    [Fact]
    public void NoTypeBindsOneStubTwice()
    {
        foreach (var t in Core.Value.Types)
        {
            var stubs = t.BindingOrder().ToList();
            Assert.True(stubs.Count == stubs.Distinct(StringComparer.Ordinal).Count(), $"{t.FullName} repeats a stub");
        }
    }

    [Fact]
    public void EveryCarriedBoundTypeIsInTheModel()
    {
        var bound = Core.Value.Types.ToHashSet();
        var used = Core.Value.Types.SelectMany(t =>
            t.Methods.SelectMany(m => m.Parameters.Select(p => p.Type).Append(m.Result))
             .Concat(t.Constructors.SelectMany(c => c.Parameters.Select(p => p.Type)))
             .Concat(t.Properties.Select(p => p.Type))
             .Concat(t.StaticAttributes.Select(s => s.Type)));
        Assert.All(used.Where(c => c.Bound is not null), c => Assert.Contains(c.Bound!, bound));
    }
}
