// SPDX-License-Identifier: MIT
// Lists what the kit's class declares, spelled as in C.
using System;
using System.Collections.Generic;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;

internal static class ListDeclarations
{
    private static readonly Dictionary<Type, string> Spelling = new Dictionary<Type, string> {
        { typeof(int), "int" }, { typeof(double), "double" }, { typeof(byte), "unsigned char" },
        { typeof(byte[]), "char*" }, { typeof(int[]), "int*" }, { typeof(double[]), "double*" },
    };
    private static readonly Dictionary<Type, string> FieldSpelling = new Dictionary<Type, string> {
        { typeof(byte), "uint8_t" }, { typeof(short), "int16_t" }, { typeof(ushort), "uint16_t" },
        { typeof(int), "int32_t" }, { typeof(uint), "uint32_t" }, { typeof(double), "double" },
    };

    private static string Spelled(Type type)
    {
        if (type.IsByRef)
            return Spelled(type.GetElementType()) + "*";
        string name;
        return Spelling.TryGetValue(type, out name) ? name : type.Name;
    }

    private static string Spelled(FieldInfo field)
    {
        if (field.FieldType == typeof(byte[]))
            return "char[" + field.GetCustomAttribute<MarshalAsAttribute>().SizeConst + "]";
        return FieldSpelling[field.FieldType];
    }

    private static void Main()
    {
        foreach (MethodInfo method in typeof(MoverLibrary).GetMethods(BindingFlags.Public | BindingFlags.Static)) {
            var import = method.GetCustomAttribute<DllImportAttribute>();
            if (import == null)
                continue;
            if (import.Value != "moverLibrary" || import.EntryPoint != method.Name ||
                import.CallingConvention != CallingConvention.Cdecl)
                Console.WriteLine("wrongly imported: " + method.Name);
            foreach (ParameterInfo argument in method.GetParameters()) {
                // An array that the library fills has to be copied back.
                bool filled = argument.Name == "ids" || argument.Name == "buffer" ||
                              argument.Name == "pairs" && method.Name.StartsWith("get");
                if (argument.ParameterType.IsArray && argument.IsOut != filled)
                    Console.WriteLine("wrong direction: " + method.Name + " " + argument.Name);
            }
            var arguments = method.GetParameters().Select(each => Spelled(each.ParameterType) + " " + each.Name);
            Console.WriteLine("{0} {1}({2})", Spelled(method.ReturnType), method.Name, string.Join(", ", arguments));
        }
        foreach (Type record in new[] { typeof(MotorParams), typeof(MotorStageState), typeof(CONTROLER_STATE) }) {
            Console.WriteLine("{0} {1}", record.Name, Marshal.SizeOf(record));
            foreach (FieldInfo field in record.GetFields())
                Console.WriteLine("{0}.{1} {2} {3}", record.Name, field.Name, Marshal.OffsetOf(record, field.Name),
                                  Spelled(field));
        }
    }
}
