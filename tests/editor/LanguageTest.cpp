#include "editor/Language.h"

#include <gtest/gtest.h>

namespace quillmark {
namespace {

TEST(Language, IsToldByTheExtension)
{
    EXPECT_EQ(languageForURL("/folder/x.MM"), Language::c);
    EXPECT_EQ(languageForURL("a.b.tsx"), Language::javascript);
    EXPECT_EQ(languageForURL("Info.plist"), Language::html);
    EXPECT_EQ(languageForURL("run.command"), Language::shell);
    for (const auto name :
        {"", "Makefile", ".json", "folder.rs/note", "x.", "x.txt", "x.js jsx", "x. ", "x.\xFF"})
        EXPECT_EQ(languageForURL(name), Language::plain) << name;
    EXPECT_EQ(languageForURL(std::nullopt), Language::plain);
}

TEST(Language, IsGuessedFromTheText)
{
    const std::pair<const char16_t*, Language> samples[] = {
        {u"  \n<!DOCTYPE html>", Language::html},
        {u"text <HTML>", Language::html},
        {u"<?xml version=\"1.0\"?>", Language::html},
        {u"\t#!/usr/bin/env python3\nnode", Language::python},
        {u"#!/usr/bin/env node\npython", Language::javascript},
        {u"#!/bin/sh", Language::shell},
        {u"{\"a\": 1}", Language::json},
        {u"[{\"a\" : 1}]", Language::json},
        {u"{}", Language::plain},
        {u"#include <x>\nfn let mut", Language::c},
        {u"#import \"x.h\"", Language::plain},
        {u"fn main() { println!(); }", Language::rust},
        {u"func f() { let x = 1 }", Language::swift},
        {u"def f(x):", Language::python},
        {u"a.map(x => x)", Language::javascript},
        {u"const a = 1", Language::javascript},
        {u"Обычный текст: раз, два; три.", Language::plain},
        {u"", Language::plain},
    };
    for (const auto& [text, language] : samples)
        EXPECT_EQ(displayName(guessLanguage(text)), displayName(language));
}

TEST(Language, StyleSheetsNeedADeclaration)
{
    for (const auto text : {u"body { color: red; }", u"{ a-: ;", u"{x\n:\n\ny;", u"{ a:: b;"})
        EXPECT_EQ(displayName(guessLanguage(text)), "CSS");
    for (const auto text : {u"{ 1: 2; }", u"a {;}", u"a: b;", u"{ a:; }", u"{ a: {b;", u"{ : b; }"})
        EXPECT_EQ(displayName(guessLanguage(text)), "Текст");
}

} // namespace
} // namespace quillmark
